#pragma once

#include <span>
#include <string_view>

#include "TidewellCore/Platform/Bytes.h"

/// Every reader of bytes that come from somewhere else. Each runs one input and aborts when a promise
/// of its reader is broken: it throws anything but its own failures, or misreads what it wrote itself.
struct FuzzTarget {
  std::string_view name;
  void (*run)(ByteView input);
};

std::span<const FuzzTarget> fuzzTargets();
