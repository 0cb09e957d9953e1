#pragma once

// The end of a program that is told again to end, or whose work does not come
// to an end: at once, but leaving no working folder behind. A signal handler may
// not remove files, so a thread that waits for nothing else does.
namespace AbruptEnd {

// Starts that thread, which takes no signals; the program is to end with
// `exitCode`. To be called once, before `request`. Where there can be no such
// thread, the end comes without it, and the next run removes what is left.
void prepare(int exitCode);

// Asks for the end, which comes soon. May be called by a signal handler, again and again.
void request() noexcept;

}  // namespace AbruptEnd
