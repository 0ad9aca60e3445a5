#pragma once

/// Results of the operations of qlix_flv.
///
///   number  name                    meaning
///        0  kQlixFLVOk              done
///        1  kQlixFLVNullHandle      the handle is null
///        2  kQlixFLVNullPointer     a pointer argument is null, or a callback is missing
///        3  kQlixFLVOutOfMemory     the allocator gave no memory
///        4  kQlixFLVNotFLV          the stream doesn't begin like an FLV file
///        5  kQlixFLVStreamFailed    a stream operation failed or ended before the file's size
///        6  kQlixFLVNoMoreEntries   the iterator is at its end
///        7  kQlixFLVWrongValueType  a script value of another type was asked for
///        8  kQlixFLVCorruptData     sizes or values that can't be: the file is damaged
///        9  kQlixFLVNoBackward      the size words don't lead backward to a tag that fits
///       10  kQlixFLVWrongDirection  the direction is neither 0 nor 1
///       11  kQlixFLVWrongTagType    the tag is of another type than the operation is for
///       12  kQlixFLVEmptyTag        the tag has no body to tell its codec
///       13  kQlixFLVInternal        a failure that has no other number
enum QlixFLVError {
    kQlixFLVOk = 0,
    kQlixFLVNullHandle = 1,
    kQlixFLVNullPointer = 2,
    kQlixFLVOutOfMemory = 3,
    kQlixFLVNotFLV = 4,
    kQlixFLVStreamFailed = 5,
    kQlixFLVNoMoreEntries = 6,
    kQlixFLVWrongValueType = 7,
    kQlixFLVCorruptData = 8,
    kQlixFLVNoBackward = 9,
    kQlixFLVWrongDirection = 10,
    kQlixFLVWrongTagType = 11,
    kQlixFLVEmptyTag = 12,
    kQlixFLVInternal = 13
};
