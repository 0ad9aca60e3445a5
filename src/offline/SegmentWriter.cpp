#include "offline/SegmentWriter.h"

#include <utility>

#include <boost/smart_ptr/make_shared.hpp>

#include "kzs/base/FileStream.h"
#include "kzspkgutil/KZMStream.h"
#include "kzspkgutil/KZSMediaWriter.h"
#include "offline/OutputNames.h"

namespace torvo::offline {

using kzspkgutil::KZMStream;
using kzspkgutil::KZSMediaWriter;

SegmentWriter::SegmentWriter(const std::string& baseName, const std::string& outputPath,
                             std::uint32_t segmentDuration, kzspkgutil::IPackagerContext& context,
                             kzspkgutil::IKZSMediaWriterPolicy& policy,
                             const kzspkgutil::IMediaProperties& properties,
                             const std::string& inputPath)
    : segmentDuration_(segmentDuration),
      outputPath_(outputPath),
      baseName_(baseName),
      context_(context),
      properties_(properties),
      policy_(policy),
      inputPath_(inputPath) {
    roll();
}

SegmentWriter::~SegmentWriter() = default;

kzspkgutil::FragmentPosition SegmentWriter::writeUpTo(kzspkgutil::MessageList&& messages,
                                                      const kzspkgutil::Timestamp& endTime,
                                                      const std::uint8_t* bootstrap,
                                                      std::uint64_t bootstrapSize) {
    return writer_->writeUpTo(std::move(messages), endTime, bootstrap, bootstrapSize);
}

void SegmentWriter::finishWriter() {
    writer_->finishWriter();
    stream_->settle();
}

void SegmentWriter::advance(std::uint32_t milliseconds) {
    elapsed_ += milliseconds;
    // On purpose: more than, not as much as, and only now that the fragment is in the file. The
    // last fragment may so leave a segment behind that has a header and nothing else.
    // Pinned by PackageCliTest.AsMuchAsTheSegmentDurationIsNotMore.
    if (segmentDuration_ != 0 && elapsed_ > segmentDuration_) roll();
}

void SegmentWriter::roll() {
    // Closing swallows failures, so what is still on its way must fail here. On purpose the old
    // file is not finished beyond that. No test can tell: `finishWriter` is a flush as well.
    if (writer_) {
        writer_->flush();
        stream_->settle();
    }

    elapsed_ = 0;
    ++segmentNumber_;
    const std::string stem = outputPath_ + "/" + baseName_ + "Seg" + std::to_string(segmentNumber_);
    const std::string path = stem + ".kzs";
    refuseInput(path, inputPath_);
    refuseInput(stem + ".kzx", inputPath_);  // written when it is too late to refuse
    writer_.reset();
    stream_ = boost::make_shared<KZMStream>(path, kzs::openFlagsFor(true, false));
    writer_ = boost::make_shared<KZSMediaWriter>(context_, policy_, properties_, *stream_);
}

}  // namespace torvo::offline
