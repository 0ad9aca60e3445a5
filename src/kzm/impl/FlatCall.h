#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "kzm/Exception.h"

namespace qlix::kzm::impl {

/// Runs an operation as the public handles do: whatever fails is thrown as its number.
template <class Operation>
auto flat(Operation operation) {
    try {
        return operation();
    } catch (...) {
        throw Exception(numberOfCurrentException());
    }
}

/// The same for an operation of a writer, which is told of the number first.
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

/// Closes a writer before it goes. What fails then is swallowed: whoever wants to hear of it calls
/// `close`.
template <class WriterImpl>
void closeAndDelete(WriterImpl* writer) noexcept {
    try {
        writer->close();
    } catch (...) {  // see above
    }
    delete writer;
}

/// Makes a writer that is closed when its last handle goes; what fails is thrown as its number.
template <class WriterImpl, class... Arguments>
std::shared_ptr<WriterImpl> makeFlat(Arguments&&... arguments) {
    return flat([&] {
        return std::shared_ptr<WriterImpl>(new WriterImpl(std::forward<Arguments>(arguments)...),
                                           closeAndDelete<WriterImpl>);
    });
}

}  // namespace qlix::kzm::impl
