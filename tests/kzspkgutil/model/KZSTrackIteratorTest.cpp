#include <boost/smart_ptr/make_shared.hpp>
#include <gtest/gtest.h>

#include "kzspkgutil/model/KZSTrackIterator.h"

namespace torvo::kzspkgutil {
namespace {

TEST(KZSTrackIteratorTest, HasNothingInAnEmptyList) {
    EXPECT_FALSE(KZSTrackIterator({}).hasNext());
}

TEST(KZSTrackIteratorTest, GivesTheTracksThemselvesInTheirOrder) {
    const auto first = boost::make_shared<KZSTrack>();
    const auto second = boost::make_shared<KZSTrack>();
    KZSTrackIterator tracks({first, second});

    ASSERT_TRUE(tracks.hasNext());
    EXPECT_EQ(tracks.next(), first);
    ASSERT_TRUE(tracks.hasNext());
    EXPECT_EQ(tracks.next(), second);
    EXPECT_FALSE(tracks.hasNext());
}

TEST(KZSTrackIteratorTest, WalksTheListAsItWasWhenTheWalkBegan) {
    std::vector<boost::shared_ptr<KZSTrack>> list(1, boost::make_shared<KZSTrack>());
    KZSTrackIterator tracks(list);
    list.clear();
    EXPECT_TRUE(tracks.hasNext());
}

TEST(MediaPropertiesTest, StartWithFullVolumeAndMilliseconds) {
    const MediaProperties properties;
    EXPECT_EQ(properties.rate, 1.0F);
    EXPECT_EQ(properties.volume, 1.0F);
    EXPECT_EQ(properties.timescale, 1000U);
    EXPECT_EQ(properties.duration, 0U);
    EXPECT_FALSE(properties.isFragmented);
}

}  // namespace
}  // namespace torvo::kzspkgutil
