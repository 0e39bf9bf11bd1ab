#include "zeltbraidwerk/foundations/signal_handler.h"

#include <csignal>
#include <cstdlib>
#include <iostream>

namespace {

struct Named {
  int number;
  const char* name;
};

constexpr Named handled[] = {{SIGTERM, "SIGTERM"}, {SIGSEGV, "SIGSEGV"}, {SIGINT, "SIGINT"},
                             {SIGILL, "SIGILL"},   {SIGABRT, "SIGABRT"}, {SIGFPE, "SIGFPE"}};

}  // namespace

void setup_cpp_signal_handler() {
  for (const Named& sig : handled) std::signal(sig.number, cpp_signal_handler);
}

void cpp_signal_handler(int sig) {
  for (const auto& [number, name] : handled) {
    if (number == sig) std::cerr << "Caught a " << name << std::endl;
  }
  std::exit(sig);
}
