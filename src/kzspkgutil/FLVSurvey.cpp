#include "kzspkgutil/FLVSurvey.h"

#include <cmath>
#include <string>

#include "flv/Exception.h"
#include "flv/ScriptDataIterator.h"
#include "kzspkgutil/model/TCMessage.h"

namespace torvo::kzspkgutil {
namespace {

constexpr int kTagsLookedAt = 10;
constexpr double kLargestPictureSide = 65535;

class Surveyor {
public:
    explicit Surveyor(const flv::Reader& reader) : reader_(reader) {}

    FLVSurvey survey() {
        findSize();
        findKindsAndLastTag();
        // On purpose: the time of the last tag, of any type, though an earlier one may be later.
        // Pinned by FLVMediaSourceTest.TheDurationIsTheTimeOfTheLastTagOfAnyType.
        // Without any tag this fails: there is no tag whose time could be asked.
        found_.durationMs = static_cast<std::uint32_t>(tag_.getInfo().timestamp);
        return found_;
    }

private:
    void findSize() {
        flv::TagIterator tags = reader_.getTags(flv::Direction::forward);
        for (int count = 1; tags.hasNext(); ++count) {
            tag_ = tags.next();
            const FLVTagInfo info = tag_.getInfo();
            // On purpose: a record further back is not found.
            // Pinned by FLVMediaSourceTest.TheSizeIsLookedForInTheFirstTenTags.
            if (count > kTagsLookedAt || info.timestamp > 0) return;
            // On purpose: data in AMF3 isn't looked at, though it may hold the same record.
            // Pinned by FLVMediaSourceTest.DataInAMF3TellsNoSize.
            if (info.tagType != kAmf0DataTag) continue;
            const flv::ScriptData event = tag_.getScriptData();
            if (event.getName().getText() != "onMetaData") continue;
            takeSize(event.getIterator());
            return;
        }
    }

    void takeSize(flv::ScriptDataIterator members) {
        while (members.hasNext()) {
            const flv::ScriptData member = members.next();
            const std::string name = member.getName().getText();
            if (name == "width") take(member.getNumber(), found_.width);
            if (name == "height") take(member.getNumber(), found_.height);
        }
    }

    /// A number that can't be a side of a picture counts as not given.
    static void take(double number, double& side) {
        if (std::isfinite(number) && number >= 0 && number <= kLargestPictureSide) side = number;
    }

    void findKindsAndLastTag() {
        try {
            // The kinds first: a file that can't be walked backward has its tracks all the same.
            const FLVDocInfo kinds = reader_.getDocInfo();
            found_.hasAudio = kinds.hasAudio != 0;
            found_.hasVideo = kinds.hasVideo != 0;
            tag_ = reader_.getTags(flv::Direction::backward).next();
        } catch (const flv::Exception& failure) {
            // On purpose: any other failure leaves the tag that was looked at last, and the kinds
            // as none. Pinned by FLVMediaSourceTest.DamageBehindTheFirstTagsIsLeftToTheIteration.
            if (failure.code() == flv::Exception::kNoBackward) walkToLastTag();
        }
    }

    void walkToLastTag() {
        try {
            flv::TagIterator tags = reader_.getTags(flv::Direction::forward);
            while (tags.hasNext()) tag_ = tags.next();
        } catch (const flv::Exception& failure) {
            // The last tag ahead of damage counts; a sample iterator tells of the damage. A file
            // that can't be read is no such end: taken for one, it would cut the recording short.
            if (failure.code() != flv::Exception::kCorruptData) throw;
        }
    }

    const flv::Reader& reader_;
    flv::Tag tag_;  ///< the tag that was looked at last
    FLVSurvey found_;
};

}  // namespace

FLVSurvey surveyFLV(const flv::Reader& reader) { return Surveyor(reader).survey(); }

}  // namespace torvo::kzspkgutil
