#pragma once

#include "byte_source.h"

// Has a server give an answer to an operation. Aborts when status and results contradict each
// other. The input: a letter for the operation, a letter for what is made of the rest, and the
// bytes of the answer; see check_answer.cpp.
void check_answer(ByteSource input);
