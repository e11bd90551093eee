#pragma once

#include <string>

#include "hostile/behaviour.h"

// Bodies that gzip has made smaller. The library never asks for such. libcurl unpacks them all the
// same where they come as the coding of the transfer.

// `<?xml version="1.0"?><CIM CIMVERSION="2.0"></CIM>`.
inline const std::string small_gzip_body(
    "\x1F\x8B\x08\0\0\0\0\0\x02\x03\xB3\xB1\xAF\xC8\xCD\x51\x28\x4B\x2D\x2A\xCE\xCC\xCF\xB3\x55\x32"
    "\xD4\x33\x50\xB2\xB7\xB3\x71\xF6\xF4\x55\0\xE2\x30\xD7\xA0\x60\x4F\x7F\x3F\x5B\x25\x23\xA0\xB0"
    "\x9D\x8D\x3E\x50\xC8\x0E\0\xAE\x4E\xC3\x68\x31\0\0\0",
    65);

// A gibibyte of blanks, in three parts: the blocks go in between, so many times.
inline const std::string large_gzip_start("\x1F\x8B\x08\0\0\0\0\0\x02\x03", 10);
inline const std::string large_gzip_blocks =
    repeated(128, std::string("\xEC\xC1\x81\0\0\0\0\x80\x20\x95\xFD\x29\x17\xA9\x0A", 15) +
                      std::string(63, '\0') + std::string("\x6A\0\0\0\xFF\xFF", 6));
constexpr std::size_t large_gzip_times = 128;
inline const std::string large_gzip_end("\x01\0\0\xFF\xFF\xA6\x7F\xC4\x9A\0\0\0\x40", 13);
