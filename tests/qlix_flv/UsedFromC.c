#include "qlix_flv/UsedFromC.h"

#include "qlix_flv/qlix_flv.h"

unsigned askNobodyFromC(void) {
    FLVDocInfo info;
    return QlixFLVReaderGetDocInfo(0, &info);
}

int hasTheLayoutInC(void) {
    return offsetof(FLVTagInfo, tagType) == 8 && offsetof(FLVTagInfo, dataSize) == 12 &&
           offsetof(FLVTagInfo, timestamp) == 24 && offsetof(FLVDocInfo, hasAudio) == 4 &&
           offsetof(FLVDocInfo, hasVideo) == 8 && offsetof(FLVVideoInfo, codecId) == 4 &&
           offsetof(FLVAudioInfo, channelFlag) == 12;
}
