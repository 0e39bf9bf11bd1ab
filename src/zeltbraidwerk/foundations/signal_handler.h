#pragma once

#include "zeltbraidwerk/export.h"

/// Registers cpp_signal_handler for SIGTERM, SIGSEGV, SIGINT, SIGILL, SIGABRT and SIGFPE. The
/// library never does so by itself.
ZELTBRAIDWERK_EXPORT void setup_cpp_signal_handler();

/// Writes "Caught a SIG..." to standard error for those six, and ends the process by exit(sig).
ZELTBRAIDWERK_EXPORT void cpp_signal_handler(int sig);
