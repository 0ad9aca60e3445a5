#include <cstring>
#include <sys/resource.h>
#include <vector>

#include "qlix_hlx/LibraryFixture.h"

extern "C" int hlxHeaderIsC(void);

namespace qlix::hlx {
namespace {

TEST(LibraryStartTest, InterfaceIsUsableFromC) { EXPECT_EQ(hlxHeaderIsC(), 1); }

TEST(LibraryStartTest, TablesHaveTheirVersionsAndOnlyTheirEntries) {
    const HLXEncryptorTable* encryptors = nullptr;
    const HLXMetadataTable* metadatas = nullptr;
    const HLXRegistrationTable* registration = nullptr;
    ASSERT_EQ(HLX_GetEncryptorInterface(&encryptors), 0U);
    ASSERT_EQ(HLX_GetMetadataInterface(&metadatas), 0U);
    ASSERT_EQ(HLX_GetRegistrationInterface(&registration), 0U);

    const auto slots = [](const void* table, std::size_t size) {
        std::vector<std::uintptr_t> values(size / sizeof(std::uintptr_t));
        std::memcpy(values.data(), table, size);
        for (std::size_t i = 1; i < values.size(); ++i) values[i] = values[i] == 0 ? 0 : 1;
        return values;
    };
    using Slots = std::vector<std::uintptr_t>;
    EXPECT_EQ(slots(encryptors, sizeof(*encryptors)), (Slots{11, 1, 1, 1, 1, 1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(slots(metadatas, sizeof(*metadatas)), (Slots{5, 0, 0, 1, 1}));
    EXPECT_EQ(slots(registration, sizeof(*registration)), (Slots{6, 0, 1, 0, 1}));
}

TEST(LibraryStartTest, InitRecordMustBeThereAndZero) {
    EXPECT_EQ(HLXInitialize(nullptr), HLX_ERROR_BAD_ARGUMENT);
    const HLXInitRecord record = {{0, 0, 1, 0}};
    EXPECT_EQ(HLXInitialize(&record), HLX_ERROR_BAD_ARGUMENT);
}

TEST(LibraryStartTest, NothingWorksBeforeTheStart) {
    EXPECT_EQ(HLXTerminate(), HLX_ERROR_NOT_INITIALIZED);
    EXPECT_EQ(HLX_GetEncryptorInterface(nullptr), HLX_ERROR_BAD_ARGUMENT);
    const HLXRegistrationTable* registration = nullptr;
    ASSERT_EQ(HLX_GetRegistrationInterface(&registration), HLX_OK);
    QlixHLXCertificate* certificate = nullptr;
    EXPECT_EQ(registration->certificateFromBytes(nullptr, nullptr, 0, &certificate),
              HLX_ERROR_NOT_INITIALIZED);
    EXPECT_EQ(certificate, nullptr);
}

TEST(LibraryStartTest, WritesNoCoreFilesWhileItRuns) {
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_CORE, &before), 0);
    const HLXInitRecord record = {};
    ASSERT_EQ(HLXInitialize(&record), HLX_OK);
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_CORE, &limit), 0);
    EXPECT_LE(limit.rlim_cur, 1U);
    ASSERT_EQ(HLXTerminate(), HLX_OK);
    ASSERT_EQ(getrlimit(RLIMIT_CORE, &limit), 0);
    EXPECT_EQ(limit.rlim_cur, before.rlim_cur);
}

TEST_F(LibraryTest, StopWipesAndHandlesCanStillBeGivenBack) {
    QlixHLXEncryptor* encryptor = makeEncryptor();
    EXPECT_EQ(HLXTerminate(), HLX_OK);
    HLXEncryptionInfo info{};
    EXPECT_EQ(encryptors->prepareSample(encryptor, nullptr, 0, 1, 0, nullptr, nullptr, &info, 0, 4),
              HLX_ERROR_NOT_INITIALIZED);
    const HLXInitRecord record = {};
    ASSERT_EQ(HLXInitialize(&record), HLX_OK);
    EXPECT_EQ(encryptors->prepareSample(encryptor, nullptr, 0, 1, 0, nullptr, nullptr, &info, 0, 4),
              HLX_ERROR_BAD_HANDLE);
    EXPECT_EQ(HLXRelease(encryptor), HLX_OK);
}

TEST_F(LibraryTest, StartsNest) {
    const HLXInitRecord record = {};
    ASSERT_EQ(HLXInitialize(&record), HLX_OK);
    QlixHLXEncryptor* encryptor = makeEncryptor();
    EXPECT_EQ(HLXTerminate(), HLX_OK);
    HLXEncryptionInfo info{};
    EXPECT_EQ(encryptors->prepareSample(encryptor, nullptr, 0, 1, 0, nullptr, nullptr, &info, 0, 4),
              HLX_OK);
    EXPECT_EQ(HLXRelease(encryptor), HLX_OK);
}

TEST_F(LibraryTest, PointersThatAreNoHandlesAreRefused) {
    EXPECT_EQ(HLXRelease(nullptr), HLX_OK);
    int other = 0;
    EXPECT_EQ(HLXRelease(&other), HLX_ERROR_BAD_HANDLE);

    QlixHLXEncryptor* encryptor = makeEncryptor();
    std::uint32_t size = 0;
    EXPECT_EQ(metadatas->size(reinterpret_cast<QlixHLXMetadata*>(encryptor), &size),
              HLX_ERROR_BAD_HANDLE);
    EXPECT_EQ(HLXRelease(encryptor), HLX_OK);
    EXPECT_EQ(HLXRelease(encryptor), HLX_ERROR_BAD_HANDLE);
}

}  // namespace
}  // namespace qlix::hlx
