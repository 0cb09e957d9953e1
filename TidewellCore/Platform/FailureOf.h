#pragma once

#include <exception>

// What `work` throws, to be handled later; null when it succeeds.
template <typename Work>
std::exception_ptr failureOf(Work work) {
  try {
    work();
    return nullptr;
  } catch (...) {
    return std::current_exception();
  }
}
