#include <gtest/gtest.h>

#include "kzs/MetaTrackInfo.h"

using namespace torvo::kzs;

TEST(MetaTrackInfoTest, HasTheTypeOfItsClass) {
    EXPECT_EQ(MetaAudioTrackInfo().getTrackType(), 0U);
    EXPECT_EQ(MetaVideoTrackInfo().getTrackType(), 1U);
    EXPECT_EQ(MetaDataTrackInfo().getTrackType(), 2U);
}

TEST(MetaTrackInfoTest, GivesBackWhatWasSet) {
    MetaDataTrackInfo data;
    MetaTrackInfo& track = data;
    track.setTrackType(7);
    track.setCodec(0x61766331);
    track.setLength(1.5);
    track.setTimescale(90000);
    track.setLanguage("deu");
    EXPECT_EQ(track.getTrackType(), 7U);
    EXPECT_EQ(track.getCodec(), 0x61766331U);
    EXPECT_EQ(track.getLength(), 1.5);
    EXPECT_EQ(track.getTimescale(), 90000.0);
    EXPECT_EQ(track.getLanguage(), "deu");
}
