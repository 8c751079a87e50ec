#pragma once

#include <cstddef>
#include <string>

// Makes standard output safe to write to; the first thing in main(). A reader that closes its end is an error of
// writing then and no signal, and a standard descriptor that is closed is taken, so that no file or socket opened later
// gets what is meant for it.
void prepareStandardStreams();

// Flushes standard output; the last thing in main(). False, with a word on standard error, when something of what was
// written to std::cout did not go out.
bool flushStandardOutput(const char* program);

// What a file or standard input holds.
struct Input {
  std::string bytes;
  std::string problem;  // in place of them: "cannot be read", …
};

// Reads a file of any kind, or standard input when the path is "-", to its end; more than the limit is a problem.
Input readInput(const std::string& path, std::size_t mebibytesLimit);
