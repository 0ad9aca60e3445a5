#include "kzs/FragmentEvent.h"

namespace torvo::kzs {

bool operator==(const FragmentEvent& left, const FragmentEvent& right) {
    return left.kind == right.kind && left.fragmentNumber == right.fragmentNumber &&
           left.start == right.start && left.end == right.end &&
           left.currentCell == right.currentCell && left.previousCell == right.previousCell &&
           left.state == right.state;
}

}  // namespace torvo::kzs
