// The subcommands; each answers the process exit code.
#pragma once

#include "io/file.h"

namespace vantaro::tool {

// A command line that cannot be run: exit code 2 and the usage text.
struct UsageError : UserError {
    using UserError::UserError;
};

int encode_command(int argc, char** argv);
int decode_command(int argc, char** argv);
int info_command(int argc, char** argv);
int demo_command(int argc, char** argv);
int bench_command(int argc, char** argv);

}  // namespace vantaro::tool
