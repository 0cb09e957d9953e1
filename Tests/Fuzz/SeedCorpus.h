#pragma once

#include <string_view>
#include <vector>

#include "Tests/Support/Bytes.h"

/// What a target's fuzzing begins with: inputs made by code and the files of Tests/Fuzz/Corpus, where
/// a ".hex" file holds hexadecimal digits and any other file its input as it is.
std::vector<Fixture::Bytes> seedCorpus(std::string_view target);
