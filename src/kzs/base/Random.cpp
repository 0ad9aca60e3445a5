#include "kzs/base/Random.h"

#include <cstdlib>
#include <utility>

namespace torvo::kzs {
namespace {

std::function<int()>& testSource() {
    static std::function<int()> source;
    return source;
}

}  // namespace

void seedRandom(unsigned seed) { std::srand(seed); }

int nextRandom() { return testSource() ? testSource()() : std::rand(); }

void setRandomForTests(std::function<int()> source) { testSource() = std::move(source); }

}  // namespace torvo::kzs
