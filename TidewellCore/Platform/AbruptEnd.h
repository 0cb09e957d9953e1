#pragma once

#include <array>
#include <csignal>

// The end of a program that is told again to end, or whose work does not come
// to an end: at once, but leaving no working folder behind. A signal handler may
// not remove files, so a thread that waits for nothing else does.
namespace AbruptEnd {

// What asks a program to end, and what would end it though nobody meant to: a
// limit of processor time, and signals without a meaning here.
inline constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU, SIGUSR1, SIGUSR2};

// Starts that thread, which takes no signals; the program is to end with
// `exitCode`. To be called once, before `request`. Where there can be no such
// thread, the end comes without it, and the next run removes what is left.
// `atLast`, if any, is the last that it does.
void prepare(int exitCode, void (*atLast)() = nullptr);

// Asks for the end, which comes soon. May be called by a signal handler, again and again.
void request() noexcept;

}  // namespace AbruptEnd
