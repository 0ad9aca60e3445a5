#include "kzspkgutil/KZSMediaWriter.h"

#include <algorithm>
#include <optional>

#include <boost/smart_ptr/make_shared.hpp>

#include "kzm/SampleDescriptor.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/FLVCodecs.h"
#include "kzspkgutil/HintDescription.h"
#include "kzspkgutil/WriterFields.h"
#include "kzspkgutil/model/KZSTrackIterator.h"

namespace torvo::kzspkgutil {
namespace {

using kzs::fourCc;

constexpr std::uint8_t kEncryptedAudioTag = kAudioTag | kEncryptedTagBit;
constexpr std::uint8_t kEncryptedVideoTag = kVideoTag | kEncryptedTagBit;
constexpr std::uint8_t kEncryptedAmf0Tag = kAmf0DataTag | kEncryptedTagBit;
constexpr std::uint8_t kEncryptedAmf3Tag = kAmf3DataTag | kEncryptedTagBit;

/// Whether `time` is `limit` or later. Both are signed: a time before 0 is damage, and it has to
/// reach the box library, which refuses it.
bool isAtOrPast(const Timestamp& time, const Timestamp& limit) {
    const std::uint64_t scaled =
        kzs::rescaleTruncating(limit.value, limit.timescale, time.timescale);
    return static_cast<std::int64_t>(time.value) >= static_cast<std::int64_t>(scaled);
}

bool isKeyFrame(const TCMessage& message) {
    return (message.getTag()[0] & kTagTypeMask) == kVideoTag &&
           message.getTagSize() > kTagOverhead &&
           flvFrameTypeOf(message.getTagBody()[0]) == kFLVKeyFrame;
}

void keepBuffer(void*) {}

}  // namespace

/// Where the track of a kind is kept, and who makes it.
struct KZSMediaWriter::TrackSlot {
    std::uint32_t handler;
    qlix::kzm::TrackHandle KZSMediaWriter::*track;
    qlix::kzm::TrackHandle (IKZSMediaWriterPolicy::*add)(qlix::kzm::KZSWriter&, const KZSTrack&);
};

// The context is that of the policy, whose header messages are the only blocks made on the way.
KZSMediaWriter::KZSMediaWriter(IPackagerContext&, IKZSMediaWriterPolicy& policy,
                               const IMediaProperties& source, qlix::kzm::QlixIOStream& stream)
    : policy_(policy),
      properties_(source.getProperties()),
      writer_(stream, configuration(), &allocator_) {
    addMediaTracks(source);
    addHintTrack();
    fragmentOffset_ = writer_.startFragment();
}

qlix::kzm::WriterConfiguration KZSMediaWriter::configuration() const {
    qlix::kzm::WriterConfiguration configuration;
    configuration.fragmented = true;
    configuration.creationDate = currentDate();
    configuration.modificationDate = configuration.creationDate;
    configuration.rate = properties_.rate;
    // On purpose: a movie is never louder than full volume, whatever its source says.
    // Pinned by KZSMediaWriterTest.NeverRaisesTheVolumeOfTheMovieAbove1.
    configuration.volume = std::min(properties_.volume, 1.0F);
    configuration.timescale = properties_.timescale;
    // On purpose: cut to 32 bits. No test can tell: all durations in the file come from its
    // samples.
    configuration.duration =
        truncatedLow32(properties_.timescale * properties_.durationSeconds() + 0.5);
    return configuration;
}

void KZSMediaWriter::addMediaTracks(const IMediaProperties& source) {
    static constexpr TrackSlot kSlots[] = {
        {fourCc("vide"), &KZSMediaWriter::videoTrack_, &IKZSMediaWriterPolicy::addVideoTrack},
        {fourCc("soun"), &KZSMediaWriter::audioTrack_, &IKZSMediaWriterPolicy::addAudioTrack},
        {fourCc("meta"), &KZSMediaWriter::dataTrack_, &IKZSMediaWriterPolicy::addDataTrack},
    };
    const auto tracks = source.getTracks();
    while (tracks->hasNext()) {
        const auto track = tracks->next();
        for (const TrackSlot& slot : kSlots) {
            if (slot.handler != track->handler || this->*slot.track) continue;
            this->*slot.track = (policy_.*slot.add)(writer_, *track);
            mediaTracks_.push_back(this->*slot.track);
            if (slot.handler == fourCc("vide")) videoLanguage_ = track->language;
        }
    }
}

void KZSMediaWriter::addHintTrack() {
    constexpr char kHandlerName[] = "Varnholt Systems Inc. Hint Handler";
    qlix::kzm::KZMTrackInfo info;
    info.handler = fourCc("hint");
    info.timescale = 1000;
    info.creationDate = currentDate();
    info.modificationDate = info.creationDate;
    setLanguage(info, videoTrack_ ? videoLanguage_ : "eng");
    info.handlerName = kHandlerName;
    info.handlerNameLength = sizeof kHandlerName;  // 35, with the terminating zero

    qlix::kzm::KZMTrackParams params;
    params.initialEntries = 1;
    params.maxEdits = 1000;
    params.descriptionSpace = 1024;
    hintTrack_ =
        writer_.addHintTrack(info, params, info.handlerName, info.handlerNameLength,
                             mediaTracks_.data(), static_cast<std::uint32_t>(mediaTracks_.size()));

    qlix::kzm::RtmpSampleDescriptor description;
    description.format = fourCc("rtmp");
    description.handler = fourCc("hint");
    description.hintTrackVersion = 1;
    description.highestCompatibleVersion = 1;
    description.maxPacketSize = 500;
    writer_.addSampleDescription(hintTrack_, description, makeHintDescriptionData(std::nullopt));
}

void KZSMediaWriter::setBootstrap(const std::uint8_t* bootstrap, std::uint64_t size) {
    if (bootstrap == nullptr) {
        writer_.setBootstrap(nullptr, size, nullptr, keepBuffer);
        return;
    }
    // A copy, since the caller's buffer would be gone when a failing policy leaves the fragment
    // open and the file is closed much later.
    bootstrap_.assign(bootstrap, bootstrap + size);
    writer_.setBootstrap(bootstrap_.data(), size, nullptr, keepBuffer);
}

FragmentPosition KZSMediaWriter::writeUpTo(MessageList&& messages, const Timestamp& endTime,
                                           const std::uint8_t* bootstrap,
                                           std::uint64_t bootstrapSize) {
    const auto end = std::find_if(messages.begin(), messages.end(), [&](const TCMessage& message) {
        return isAtOrPast(message.getMessageTime(), endTime);
    });
    if (end != messages.begin()) {
        setBootstrap(bootstrap, bootstrapSize);
        // On purpose: each call begins anew, so that its first audio gets a header of its own.
        // Pinned by CallsTest.BeginAnewWithEachFragment.
        Timestamp lastHeaderTime;
        std::for_each(messages.begin(), end, [&](TCMessage& message) {
            writeMessage(message, lastHeaderTime);
            message = TCMessage();
        });
    }
    // On purpose: the position goes back one call late, and the next fragment is already open.
    // Pinned by KZSMediaWriterFragmentsTest.AnswersThePositionOfTheFragmentItCompletes.
    const FragmentPosition position = {fragmentOffset_, 0};
    fragmentOffset_ = writer_.startFragment();
    return position;
}

void KZSMediaWriter::writeMessage(const TCMessage& message, Timestamp& lastHeaderTime) {
    if (message.getTagSize() == 0) return;
    // On purpose: the type byte as it stands; bits other than that of encryption make it unknown.
    // Pinned by KZSMediaWriterFragmentsTest.PassesOverUnknownTagTypes.
    switch (message.getTag()[0]) {
        case kAudioTag:
        case kEncryptedAudioTag:
            writeAudio(message, lastHeaderTime);
            break;
        case kVideoTag:
        case kEncryptedVideoTag:
            writeVideo(message);
            break;
        case kAmf3DataTag:
        case kAmf0DataTag:
        case kEncryptedAmf3Tag:
        case kEncryptedAmf0Tag:
            policy_.writeDataMessage(writer_, hintTrack_, dataTrack_, message);
            break;
        default:
            break;
    }
}

/// Where audio gets a header ahead of it, and an index entry:
///
///   video track  a second since the last  last header at 0  header ahead  index entry
///   no           yes                      any               yes           where no header was made
///   no           no                       yes               yes           no
///   no           no                       no                no            no
///   yes          any                      yes               yes           no
///   yes          any                      no                no            no
///
/// On purpose: a first message at 0 leaves the last header at 0, so that the next gets one too.
/// Pinned by CallsTest.GiveTheSecondAudioAHeaderTooWhenTheFirstIsAt0.
void KZSMediaWriter::writeAudio(const TCMessage& message, Timestamp& lastHeaderTime) {
    const Timestamp time = message.getSampleTime();
    const Timestamp nextDue = {
        lastHeaderTime.value + lastHeaderTime.timescale, lastHeaderTime.timescale, {0, 0}};
    const bool isDue = !videoTrack_ && isAtOrPast(time, nextDue);

    bool indexed = false;
    if (isDue || lastHeaderTime.value == 0) {
        lastHeaderTime = time;
        const bool isWritten = policy_.writeAudioHeader(writer_, hintTrack_, audioTrack_, time,
                                                        message.getMessageTime(), isDue);
        indexed = isDue && !isWritten;
    }
    policy_.writeAudioMessage(writer_, hintTrack_, audioTrack_, message, indexed);
}

void KZSMediaWriter::writeVideo(const TCMessage& message) {
    if (isKeyFrame(message)) {
        const Timestamp sampleTime = message.getSampleTime();
        const Timestamp& messageTime = message.getMessageTime();
        policy_.writeVideoHeader(writer_, hintTrack_, videoTrack_, sampleTime, messageTime);
        if (audioTrack_) {
            policy_.writeAudioHeader(writer_, hintTrack_, audioTrack_, sampleTime, messageTime,
                                     false);
        }
    }
    policy_.writeVideoMessage(writer_, hintTrack_, videoTrack_, message);
}

void KZSMediaWriter::flush() { writer_.flush(); }

boost::shared_ptr<ITrackIterator> KZSMediaWriter::getTracks() const {
    return boost::make_shared<KZSTrackIterator>(std::vector<boost::shared_ptr<KZSTrack>>());
}

}  // namespace torvo::kzspkgutil
