#pragma once

#include <string>

#include "support/Bytes.h"

namespace kz::test {

/// A folder of its own for one test, removed with all its content when the object goes.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    /// The path of `name` inside the folder; nothing is made.
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    /// Writes a file and returns its path.
    std::string write(const std::string& name, const Bytes& content) const;
    /// Makes a socket: a path that exists and that even the superuser can't open as a file.
    std::string makeSocket(const std::string& name) const;

private:
    std::string path_;
};

/// The whole content of a file. Throws std::runtime_error when it can't be read.
Bytes readFile(const std::string& path);
void writeFile(const std::string& path, const Bytes& content);
bool fileExists(const std::string& path);

}  // namespace kz::test
