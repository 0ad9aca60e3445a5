// A program of somebody else that stands on the installed libraries: it makes a timetable of two
// fragments, reads it back, and names a box code.

#include <cstdio>
#include <sstream>

#include "kzm/Exception.h"
#include "kzs/BootstrapBuilder.h"
#include "kzs/BootstrapReader.h"
#include "kzs/BootstrapWriter.h"

int main() {
    torvo::kzs::BootstrapBuilder builder;
    builder.addFragment(1, 1, torvo::kzs::milliseconds(0), 4000);
    builder.addFragment(1, 2, torvo::kzs::milliseconds(4000), 2000);
    builder.markEnd();
    std::stringstream file;
    torvo::kzs::writeBootstrap(file, builder.bootstrap(), false);
    torvo::kzs::BootstrapInfo info;
    torvo::kzs::readBootstrap(file, info);
    try {
        qlix::kzm::raise(qlix::kzm::ErrorCode::boxTooShort);
    } catch (const qlix::kzm::Exception&) {
        std::printf("%zu entries\n", info.fragmentRunTables.front().entries.size());
    }
    return 0;
}
