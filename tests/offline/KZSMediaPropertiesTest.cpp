#include <boost/smart_ptr/make_shared.hpp>
#include <gtest/gtest.h>

#include "kzspkgutil/model/KZSTrackIterator.h"
#include "offline/KZSMediaProperties.h"

namespace torvo::offline {
namespace {

using kzspkgutil::KZSSampleDescriptor;
using kzspkgutil::KZSTrack;
using kzspkgutil::MediaProperties;

class Source final : public kzspkgutil::IMediaProperties {
public:
    MediaProperties getProperties() const override { return properties; }
    boost::shared_ptr<kzspkgutil::ITrackIterator> getTracks() const override {
        return boost::make_shared<kzspkgutil::KZSTrackIterator>(tracks);
    }

    MediaProperties properties;
    std::vector<boost::shared_ptr<KZSTrack>> tracks;
};

boost::shared_ptr<KZSSampleDescriptor> descriptor(std::size_t extraSize) {
    auto made = boost::make_shared<KZSSampleDescriptor>();
    made->extraData.resize(extraSize);
    return made;
}

Source sourceWithTwoTracks() {
    Source source;
    auto first = boost::make_shared<KZSTrack>();
    first->handler = 1;
    first->language = "deu";
    first->descriptionCount = 2;
    first->emptyEditCount = 3;
    first->largestDescriptionSize = 99;
    first->sampleCount = 250;
    first->descriptors = {descriptor(41), descriptor(99)};
    source.tracks = {first, boost::make_shared<KZSTrack>()};
    source.tracks.back()->largestDescriptionSize = 5;
    source.properties.duration = 1234;
    source.properties.timescale = 600;
    return source;
}

boost::shared_ptr<KZSTrack> nextTrack(kzspkgutil::ITrackIterator& tracks) {
    EXPECT_TRUE(tracks.hasNext());
    return tracks.next();
}

TEST(KZSMediaPropertiesTest, TracksAreCopiedForASegmentOfTheirOwn) {
    const Source source = sourceWithTwoTracks();
    KZSMediaProperties properties;
    properties.fillFrom(source);
    const auto tracks = properties.getTracks();
    const auto first = nextTrack(*tracks);
    EXPECT_EQ(first->handler, 1U);
    EXPECT_EQ(first->language, "deu");
    EXPECT_EQ(first->descriptionCount, 1U);
    EXPECT_EQ(first->emptyEditCount, 1000U);
    EXPECT_EQ(first->largestDescriptionSize, 41U);
    EXPECT_EQ(first->sampleCount, 0U);
    EXPECT_EQ(first->descriptors, source.tracks.front()->descriptors);
    const auto second = nextTrack(*tracks);
    EXPECT_EQ(second->largestDescriptionSize, 0U);
    EXPECT_FALSE(tracks->hasNext());
}

TEST(KZSMediaPropertiesTest, TheSourceKeepsItsOwnTracks) {
    const Source source = sourceWithTwoTracks();
    KZSMediaProperties properties;
    properties.fillFrom(source);
    EXPECT_EQ(source.tracks.front()->sampleCount, 250U);
    EXPECT_EQ(source.tracks.front()->descriptionCount, 2U);
}

TEST(KZSMediaPropertiesTest, TheRecordIsThatOfTheSource) {
    KZSMediaProperties properties;
    properties.fillFrom(sourceWithTwoTracks());
    EXPECT_EQ(properties.getProperties().duration, 1234U);
    EXPECT_EQ(properties.getProperties().timescale, 600U);
}

TEST(KZSMediaPropertiesTest, EachIteratorStartsAtTheFirstTrack) {
    KZSMediaProperties properties;
    properties.fillFrom(sourceWithTwoTracks());
    nextTrack(*properties.getTracks());
    EXPECT_EQ(nextTrack(*properties.getTracks())->language, "deu");
}

}  // namespace
}  // namespace torvo::offline
