#include "kzm/Exception.h"

#include <new>

namespace qlix::kzm {

std::uint32_t numberOfCurrentException() noexcept {
    try {
        throw;
    } catch (const Exception& failure) {
        return failure.code();
    } catch (const std::bad_alloc&) {
        return numberOf(ErrorCode::outOfMemory);
    } catch (const std::exception&) {
        return numberOf(ErrorCode::standardException);
    } catch (...) {
        return numberOf(ErrorCode::other);
    }
}

}  // namespace qlix::kzm
