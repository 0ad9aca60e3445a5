#pragma once

#include <functional>

namespace torvo::kzs {

/// Starts the sequence of nextRandom anew.
void seedRandom(unsigned seed);

/// A number of 0 or more, for ids only: it protects nothing.
int nextRandom();

/// For tests: nextRandom answers what `source` gives, until an empty one is set.
void setRandomForTests(std::function<int()> source);

}  // namespace torvo::kzs
