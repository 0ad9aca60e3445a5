#include "kzs/base/StreamExceptionGuard.h"

namespace torvo::kzs {
namespace {

void restore(std::ios& stream, std::ios::iostate former) {
    if ((stream.rdstate() & former) != 0) stream.clear(stream.rdstate() & ~former);
    stream.exceptions(former);
}

}  // namespace

StreamExceptionGuard::StreamExceptionGuard(std::ios& stream, std::ios::iostate exceptions)
    : stream_(stream), former_(stream.exceptions()) {
    try {
        stream_.exceptions(exceptions);
    } catch (...) {
        // An object that wasn't finished has no destructor.
        restore(stream_, former_);
        throw;
    }
}

StreamExceptionGuard::~StreamExceptionGuard() { restore(stream_, former_); }

}  // namespace torvo::kzs
