#pragma once

#include "byte_source.h"

// Sends pieces to a reader, each of which it receives by itself, and then closes. Aborts when the
// callback gets anything else than the body, or the sender anything else than the right answer.
// The input is one piece after the other: a byte, and four times as many bytes of the piece.
void check_reader(ByteSource input);
