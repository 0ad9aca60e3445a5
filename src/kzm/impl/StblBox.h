#pragma once

#include "kzm/impl/Co64Box.h"
#include "kzm/impl/CttsBox.h"
#include "kzm/impl/SdtpBox.h"
#include "kzm/impl/StcoBox.h"
#include "kzm/impl/StscBox.h"
#include "kzm/impl/StsdBox.h"
#include "kzm/impl/StssBox.h"
#include "kzm/impl/StszBox.h"
#include "kzm/impl/SttsBox.h"

namespace qlix::kzm::impl {

/// One sample as the tables of a file without fragments take it.
struct TableSample {
    std::uint32_t size = 0;        ///< bytes
    std::uint64_t offset = 0;      ///< position in the file
    std::uint64_t decodeTime = 0;  ///< ticks of the media
    std::uint32_t compositionOffset = 0;
    std::uint32_t kind = 0;              ///< as in KZMSample
    std::uint32_t descriptionIndex = 1;  ///< in `stsd`, from 1
};

/// Sample tables: `stsd`, `stts`, `stsc`, `stsz`, `co64`, `ctts`, `stss`, and `sdtp` for a track
/// that asks for it. In a fragmented file all but `stsd` stay empty.
class StblBox final : public Box {
public:
    /// Makes the children too.
    StblBox(const BoxContext& context, const TrackSettings& settings);
    StblBox(const BoxContext& context, const BoxHeader& header);

    void addChild(BoxPtr child) override;
    RequiredChildren requiredChildren() const override { return requiredChildrenOf(type()); }
    /// Writes the rows of the open chunk and leaves no chunk open.
    void updateFields() override;
    /// Parses `sdtp` last: it needs the count of `stsz`.
    void readChildren(RootBox* root, bool validate) override;

    /// Adds a row to each table at once. The box stands in the file already; writing it again
    /// brings the counts up to date. Throws tableFull beyond the capacity.
    void addSample(const TableSample& sample);

    /// Null when there is none.
    StsdBox* stsd() const { return stsd_; }
    SttsBox* stts() const { return stts_; }
    CttsBox* ctts() const { return ctts_; }
    StscBox* stsc() const { return stsc_; }
    StszBox* stsz() const { return stsz_; }
    Co64Box* co64() const { return co64_; }
    StcoBox* stco() const { return stco_; }
    StssBox* stss() const { return stss_; }
    SdtpBox* sdtp() const { return sdtp_; }

private:
    void addToChunk(const TableSample& sample);
    void closeChunk();

    StsdBox* stsd_ = nullptr;  // all are children
    SttsBox* stts_ = nullptr;
    CttsBox* ctts_ = nullptr;
    StscBox* stsc_ = nullptr;
    StszBox* stsz_ = nullptr;
    Co64Box* co64_ = nullptr;
    StcoBox* stco_ = nullptr;
    StssBox* stss_ = nullptr;
    SdtpBox* sdtp_ = nullptr;

    std::uint32_t sampleCapacity_ = 0;
    std::uint32_t sampleCount_ = 0;
    std::int64_t chunkDescription_ = -1;  // description index of the open chunk, -1 for none
    std::uint32_t chunkSamples_ = 0;
    std::uint32_t chunkNumber_ = 0;
    std::uint64_t chunkOffset_ = 0;
    std::uint64_t nextOffset_ = 0;  // where a sample must lie to go on with the chunk
};

}  // namespace qlix::kzm::impl
