#pragma once

#include <istream>
#include <stdexcept>
#include <string>
#include <utility>

namespace kz::test {

/// The buffer of an input stream that gives a text and then fails as a broken disk does, which is
/// not the end of the file.
class FailingInput : public std::streambuf {
public:
    explicit FailingInput(std::string text) : text_(std::move(text)) {
        setg(text_.data(), text_.data(), text_.data() + text_.size());
    }

protected:
    int_type underflow() override { throw std::runtime_error("the disk is broken"); }

private:
    std::string text_;
};

}  // namespace kz::test
