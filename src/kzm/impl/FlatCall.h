#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "kzm/Exception.h"

namespace qlix::kzm::impl {

/// Runs an operation of a writer as the public handles do: whatever fails becomes a number, the
/// writer is told, and the number is thrown.
template <class WriterImpl, class Operation>
auto flatCall(WriterImpl& writer, Operation operation) {
    try {
        return operation(writer);
    } catch (...) {
        const std::uint32_t number = numberOfCurrentException();
        writer.noteFailure(number);
        throw Exception(number);
    }
}

/// Makes a writer; what fails is thrown as its number.
template <class WriterImpl, class... Arguments>
std::shared_ptr<WriterImpl> makeFlat(Arguments&&... arguments) {
    try {
        return std::make_shared<WriterImpl>(std::forward<Arguments>(arguments)...);
    } catch (...) {
        throw Exception(numberOfCurrentException());
    }
}

}  // namespace qlix::kzm::impl
