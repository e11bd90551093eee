#pragma once

#include <string>

// Reads the status line and the CIM status code out of header lines, and compares with what strtoll
// finds there. Aborts when they differ.
void check_header_scan(const std::string& header);

// Reads the ERROR element of a document with these attributes.
void check_error_scan(const std::string& attributes);
