#pragma once

/// The whole program: reads the command line, runs the command, and answers the exit code. Whatever goes wrong is said
/// in one line on standard error.
namespace CommandLine {

int run(int argc, char** argv);

}  // namespace CommandLine
