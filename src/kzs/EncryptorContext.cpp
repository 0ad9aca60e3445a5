#include "kzs/EncryptorContext.h"

#include <locale>
#include <sstream>
#include <utility>

#include <boost/chrono/system_clocks.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>

#include "hlx/DRMRegistration.h"
#include "kzs/base/Clock.h"

namespace torvo::kzs {
namespace {

namespace time = boost::posix_time;

constexpr long kWarningDays = 30;

/// What the first context of the process made.
struct ProcessHandles {
    bool areMade = false;
    QlixHLXCertificate* transportCertificate = nullptr;
    QlixHLXCertificate* licenseServerCertificate = nullptr;
    QlixHLXCredential* packagerCredential = nullptr;
    QlixHLXCredential* secondCredential = nullptr;
    std::vector<QlixHLXCertificate*> extraCertificates;
};

/// Never destroyed: the handles outlive every context.
ProcessHandles& processHandles() {
    static auto* handles = new ProcessHandles;
    return *handles;
}

boost::timed_mutex& processLock() {
    static boost::timed_mutex lock;
    return lock;
}

time::ptime momentOf(const HLXCalendarTime& moment) {
    const boost::gregorian::date day(static_cast<unsigned short>(moment.year),
                                     static_cast<unsigned short>(moment.month),
                                     static_cast<unsigned short>(moment.day));
    return time::ptime(day, time::hours(moment.hour) + time::minutes(moment.minute) +
                                time::seconds(moment.second));
}

std::string textOf(const time::ptime& moment) {
    // Not given to the locale to own, which would lose it if memory ran out in its making.
    constexpr std::size_t kHeldByItsScope = 1;
    time::time_facet facet(kHeldByItsScope);
    facet.format("%d-%b-%Y %H:%M:%S GMT");
    std::ostringstream out;
    out.exceptions(std::ios::failbit | std::ios::badbit);
    // Names of months never depend on the environment.
    out.imbue(std::locale(std::locale::classic(), &facet));
    out << moment;
    return out.str();
}

}  // namespace

EncryptorContext::EncryptorContext(
    std::uint32_t kind, std::string contentId, hlx::SecretBytes commonKey,
    std::string licenseServerUrl, const Bytes& transportCertificate,
    const Bytes& licenseServerCertificate, const hlx::SecretBytes& packagerCredential,
    const std::string& packagerPassword, Bytes policy, const hlx::EncryptionFlags& encryptionFlags,
    const hlx::SecretBytes& secondCredential, const std::string& secondPassword,
    std::int32_t extraCertificateCount, const Bytes* extraCertificates)
    : kind_(kind),
      contentId_(std::move(contentId)),
      commonKey_(std::move(commonKey)),
      licenseServerUrl_(std::move(licenseServerUrl)),
      policy_(std::move(policy)),
      encryptionFlags_(encryptionFlags),
      extraCertificateCount_(extraCertificateCount) {
    const boost::unique_lock<boost::timed_mutex> lock(
        processLock(), boost::chrono::steady_clock::time_point::max());
    if (!lock.owns_lock()) throw boost::lock_error();
    ProcessHandles& handles = processHandles();
    // On purpose: a second context gets these handles, and its own certificates aren't looked at.
    // Pinned by EncryptorContextTest.ASecondContextGetsTheHandlesOfTheFirst.
    if (handles.areMade) return;
    // On purpose: set before the work, so a failure below leaves later contexts without handles.
    // Pinned by EncryptorContextTest.AFailureIsTheLibrarysAndIsNotMadeUpForLater.
    handles.areMade = true;

    const hlx::DRMRegistration registration;
    handles.transportCertificate = registration.certificate(transportCertificate);
    handles.licenseServerCertificate = registration.certificate(licenseServerCertificate);
    if (!secondCredential.empty() || !secondPassword.empty()) {
        handles.secondCredential = registration.credential(secondCredential, secondPassword);
    }
    handles.packagerCredential = registration.credential(packagerCredential, packagerPassword);
    for (std::int32_t i = 0; i < extraCertificateCount; ++i) {
        handles.extraCertificates.push_back(registration.certificate(extraCertificates[i]));
    }
}

QlixHLXCertificate* EncryptorContext::transportCertificate() const {
    return processHandles().transportCertificate;
}

QlixHLXCertificate* EncryptorContext::licenseServerCertificate() const {
    return processHandles().licenseServerCertificate;
}

QlixHLXCredential* EncryptorContext::packagerCredential() const {
    return processHandles().packagerCredential;
}

QlixHLXCredential* const& EncryptorContext::secondCredential() const {
    return processHandles().secondCredential;
}

QlixHLXCertificate* const* EncryptorContext::extraCertificates() const {
    const auto& extras = processHandles().extraCertificates;
    return extras.empty() ? nullptr : extras.data();
}

bool EncryptorContext::certificateStaysValid(QlixHLXCertificate* certificate,
                                             std::string& dateText) const {
    const time::ptime expiry = momentOf(hlx::HLXEncryptor::certificateDates(certificate).notAfter);
    dateText = textOf(expiry);
    const time::ptime epoch(boost::gregorian::date(1970, 1, 1));
    const time::ptime now = epoch + time::seconds(realTimeSeconds());
    // On purpose: exactly so many days are enough.
    // Pinned by EncryptorContextTest.ThirtyDaysBeforeItExpiresACertificateStillCounts.
    return expiry >= now + boost::gregorian::days(kWarningDays);
}

}  // namespace torvo::kzs
