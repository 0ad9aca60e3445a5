#pragma once

#include "kzs/FragmentEvent.h"
#include "kzs/base/FragmenterSample.h"

namespace torvo::kzs {

/// Decides where fragments end. It holds no samples and writes nothing; it never throws.
///
/// The time line is a grid of cells, one fragment duration long each. Fed with every sample that
/// isn't skipped, in order, then asked once for the end. Owners hold the concrete class, or a
/// shared_ptr made from it.
class Fragmenter {
public:
    virtual FragmentEvent addSample(const FragmenterSample& sample) = 0;
    /// The event that writes the last fragment. Leaves the state as it is.
    virtual FragmentEvent finish(const FragmenterSample& lastSample) = 0;

protected:
    Fragmenter() = default;
    ~Fragmenter() = default;
    Fragmenter(const Fragmenter&) = default;
    Fragmenter& operator=(const Fragmenter&) = default;
};

}  // namespace torvo::kzs
