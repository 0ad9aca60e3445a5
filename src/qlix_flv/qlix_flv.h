#pragma once

#include <stddef.h>
#include <stdint.h>

#include "qlix_flv/qlix_flv_error.h"

/// Reads FLV files through callbacks; usable from C.
///
/// Every operation returns a number of `QlixFLVError`; out arguments are set to null or 0 where it
/// fails. A handle belongs to the caller until its release operation; each keeps alive what it
/// stands on, so the order of releases is free. The callbacks must stay valid until the last
/// handle is released. Handles of one reader belong to one thread.

#ifdef __cplusplus
extern "C" {
#endif

/// The stream that is read. Results of read, seek and tell: 0 done, anything else failed.
typedef struct QlixFLVInputStreamCallBacks {
    void* context;
    void (*addRef)(void* context);
    void (*release)(void* context);
    /// Fewer bytes than asked for are legal; 0 bytes are the end of the stream.
    uint32_t (*read)(void* context, void* buffer, uint32_t size, uint32_t* bytesRead);
    /// whence: 0 from the start, 1 from the position, 2 from the end.
    uint32_t (*seek)(void* context, int64_t offset, uint32_t whence);
    uint32_t (*tell)(void* context, int64_t* position);
#ifdef __cplusplus
    QlixFLVInputStreamCallBacks()
        : context(nullptr),
          addRef(nullptr),
          release(nullptr),
          read(nullptr),
          seek(nullptr),
          tell(nullptr) {}
#endif
} QlixFLVInputStreamCallBacks;

/// The memory that the library lives in: handles, the read-ahead blocks and script bodies.
typedef struct QlixFLVAllocatorCallBacks {
    void* context;
    /// Aligned for any type; null when there is no memory.
    void* (*allocate)(void* context, size_t size);
    void (*free)(void* context, void* pointer);
#ifdef __cplusplus
    QlixFLVAllocatorCallBacks() : context(nullptr), allocate(nullptr), free(nullptr) {}
#endif
} QlixFLVAllocatorCallBacks;

/// What the file holds, told by its tags and not by the flags of its header.
typedef struct FLVDocInfo {
    uint32_t version;
    uint32_t hasAudio;
    uint32_t hasVideo;
} FLVDocInfo;

///   offset  size  field
///        0     8  not used
///        8     1  tag type: 8 audio, 9 video, 15 and 18 script data
///        9     3  not used
///       12     4  data size: bytes of the tag's body
///       16     8  not used
///       24     4  time in milliseconds, signed
typedef struct FLVTagInfo {
    uint32_t unused0[2];
    uint8_t tagType;
    uint8_t unused9[3];
    uint32_t dataSize;
    uint32_t unused16[2];
    int32_t timestamp;
} FLVTagInfo;

typedef struct FLVVideoInfo {
    uint32_t frameType; /* 1 is a key frame */
    uint32_t codecId;
} FLVVideoInfo;

typedef struct FLVAudioInfo {
    uint32_t soundFormat;
    uint32_t sampleRateIndex;
    uint32_t sampleSizeFlag; /* not 0: 16 bits */
    uint32_t channelFlag;    /* not 0: two channels */
} FLVAudioInfo;

typedef struct QlixFLVReader QlixFLVReader;
typedef struct QlixFLVTagIterator QlixFLVTagIterator;
typedef struct QlixFLVTag QlixFLVTag;
typedef struct QlixFLVScriptData QlixFLVScriptData;
typedef struct QlixFLVScriptDataIterator QlixFLVScriptDataIterator;
typedef struct QlixFLVScriptDataString QlixFLVScriptDataString;

/// Sets `isFLV` to 1 for a stream of at least 9 bytes with the signature and version 1, else to 0.
/// A stream of another kind is no error.
uint32_t QlixFLVDocIsFLV(const QlixFLVInputStreamCallBacks* input,
                         const QlixFLVAllocatorCallBacks* allocator, int32_t* isFLV);
/// Takes one reference on the stream and gives it back with the last handle.
uint32_t QlixFLVDocOpenForRead(const QlixFLVInputStreamCallBacks* input,
                               const QlixFLVAllocatorCallBacks* allocator, QlixFLVReader** reader);
uint32_t QlixFLVCloseReader(QlixFLVReader* reader);

/// Walks the tags until both kinds were seen. Damage ends the walk without an error.
uint32_t QlixFLVReaderGetDocInfo(QlixFLVReader* reader, FLVDocInfo* info);
/// All tags with times from `startTime` to `endTime` in the order of the file. Direction 0 is
/// forward, 1 backward from the end; backward fails with 9 where a size word doesn't fit.
/// Tags of types other than 8, 9, 15 and 18 are stepped over.
uint32_t QlixFLVReaderGetTags(QlixFLVReader* reader, int32_t startTime, int32_t endTime,
                              uint32_t direction, QlixFLVTagIterator** iterator);
/// The same for tags of the listed types. Forward, tags of different types are put into the order
/// of their times (ties as in the file) as far as a look-ahead of 1000 tags and 4 MiB reaches;
/// tags of one type keep their order.
uint32_t QlixFLVReaderGetTagsByTagTypes(QlixFLVReader* reader, int32_t startTime, int32_t endTime,
                                        uint32_t direction, const uint8_t* types,
                                        uint32_t typeCount, QlixFLVTagIterator** iterator);

/// Sets `hasMore` to 1 also where the next entry is a failure that was not given out yet.
uint32_t QlixFLVTagIteratorHasMoreEntries(QlixFLVTagIterator* iterator, int32_t* hasMore);
uint32_t QlixFLVTagIteratorGetNextEntry(QlixFLVTagIterator* iterator, QlixFLVTag** tag);
uint32_t QlixFLVReleaseTagIterator(QlixFLVTagIterator* iterator);

uint32_t QlixFLVReleaseTag(QlixFLVTag* tag);
uint32_t QlixFLVTagGetInfo(QlixFLVTag* tag, FLVTagInfo* info);
uint32_t QlixFLVTagGetVideoInfo(QlixFLVTag* tag, FLVVideoInfo* info);
uint32_t QlixFLVTagGetAudioInfo(QlixFLVTag* tag, FLVAudioInfo* info);
/// 11 + body size; the size word behind the body doesn't count.
uint32_t QlixFLVTagGetLength(QlixFLVTag* tag, uint32_t* length);
/// Copies header and body as stored, at most `size` bytes.
uint32_t QlixFLVTagCopyHeaderAndData(QlixFLVTag* tag, uint32_t size, uint8_t* buffer,
                                     uint32_t* bytesCopied);
/// The root of a tag of type 18: its name is the first value, its members are those of the second.
uint32_t QlixFLVTagGetScriptData(QlixFLVTag* tag, QlixFLVScriptData** data);

/// The name of the value; empty for the entries of a strict array.
uint32_t QlixFLVScriptDataGetName(QlixFLVScriptData* data, QlixFLVScriptDataString** name);
uint32_t QlixFLVScriptDataGetNumber(QlixFLVScriptData* data, double* number);
/// Members of an object or an array. A value that is null, undefined, unsupported, a reference
/// or not there at all has none; any other value fails with 7.
uint32_t QlixFLVScriptDataGetIterator(QlixFLVScriptData* data,
                                      QlixFLVScriptDataIterator** iterator);
uint32_t QlixFLVScriptDataIteratorHasMoreEntries(QlixFLVScriptDataIterator* iterator,
                                                 int32_t* hasMore);
uint32_t QlixFLVScriptDataIteratorGetNextEntry(QlixFLVScriptDataIterator* iterator,
                                               QlixFLVScriptData** data);
/// Length in bytes, no terminator.
uint32_t QlixFLVScriptDataStringGetLength(QlixFLVScriptDataString* string, uint32_t* length);
/// Copies at most `size` bytes.
uint32_t QlixFLVScriptDataStringCopyData(QlixFLVScriptDataString* string, uint32_t size,
                                         uint8_t* buffer, uint32_t* bytesCopied);
uint32_t QlixFLVReleaseScriptData(QlixFLVScriptData* data);
uint32_t QlixFLVReleaseScriptDataIterator(QlixFLVScriptDataIterator* iterator);
uint32_t QlixFLVReleaseScriptDataString(QlixFLVScriptDataString* string);

#ifdef __cplusplus
}
#endif
