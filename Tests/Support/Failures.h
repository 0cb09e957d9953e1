#pragma once

#include <gmock/gmock.h>

#include <ostream>

#include "TidewellCore/TidewellError.h"

/// What a failed expectation shows of an error.
inline void PrintTo(const TidewellError& error, std::ostream* stream) {
  *stream << error.caseName() << ": " << error.what();
}

namespace Fixture {

/// Matches a callable that throws exactly this error, payload included.
inline auto failsWith(const TidewellError& error) { return testing::Throws<TidewellError>(error); }

/// Matches a callable that throws TidewellError::ioFailure with this text.
inline auto failsWith(const std::string& text) { return failsWith(TidewellError::ioFailure(text)); }

}  // namespace Fixture
