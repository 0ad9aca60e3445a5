#pragma once

#include <string>

#include "offline/OptionFixture.h"
#include "support/ProtectionFiles.h"
#include "support/TestLicenseServer.h"

namespace torvo::offline {

/// The inputs of a protected job and its options. The output folder beside them isn't made.
class ProtectionInputs : public kz::test::ProtectionFiles {
public:
    using kz::test::ProtectionFiles::ProtectionFiles;

    OptionMap options() const {
        return defaultsWith({{"common-key", commonKey},
                             {"content-id", contentId},
                             {"license-server-url", url},
                             {"transport-cert", transportCert},
                             {"license-server-cert", serverCert},
                             {"packager-credential", credential},
                             {"credential-pwd", password},
                             {"policy-file", policy},
                             {"output-path", folder / "out"}});
    }
    /// The options, one replaced.
    OptionMap optionsWith(const std::string& key, const boost::any& value) const {
        OptionMap result = options();
        result[key] = value;
        return result;
    }
};

}  // namespace torvo::offline
