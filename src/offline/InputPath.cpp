#include "offline/InputPath.h"

#include <boost/filesystem/operations.hpp>

#include "offline/OfflineException.h"

namespace torvo::offline {

void requireFile(const std::string& path) {
    if (!boost::filesystem::exists(path)) throw FileNotFoundException(path);
    if (boost::filesystem::is_directory(path)) throw PathNotFileException(path);
}

void refuseFifo(const std::string& path) {
    boost::system::error_code unreachable;
    if (boost::filesystem::status(path, unreachable).type() == boost::filesystem::fifo_file) {
        throw PathNotFileException(path);
    }
}

}  // namespace torvo::offline
