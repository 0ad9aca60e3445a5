#pragma once

#include "kvl/KVLException.h"

namespace kvl::config {

/// Base of all failures of the configuration tree.
class ConfigException : public KVLException {
public:
    using KVLException::KVLException;
};

/// The text of a node without one was asked for.
class NoDataException : public ConfigException {
public:
    NoDataException() : ConfigException("No data in this Node") {}
};

/// The file isn't well-formed XML, or nested too deeply.
class BadFileException : public ConfigException {
public:
    BadFileException() : ConfigException("Bad XML File") {}
};

class FileDoesNotExistException : public ConfigException {
public:
    FileDoesNotExistException() : ConfigException("File does not exist") {}
};

}  // namespace kvl::config
