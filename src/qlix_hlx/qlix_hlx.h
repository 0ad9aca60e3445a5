#pragma once

/* The encryption library: six entry points and the tables of functions that three of them give out.
 *
 * A table begins with its version number in a slot of pointer size; entry n is the n-th slot behind
 * it. Slots that have no function hold null. Handles are opaque and belong to the library; whoever
 * received one gives it back with HLXRelease, before or after HLXTerminate. Nothing here is safe to
 * call from two threads at once. No exception leaves the library: every function answers a result
 * of qlix_hlx_codes.h, and gives nothing out unless that is 0. */

#include <stdint.h>

#include "qlix_hlx/qlix_hlx_codes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t HLXResult;

typedef struct QlixHLXEncryptor QlixHLXEncryptor;
typedef struct QlixHLXMetadata QlixHLXMetadata;
typedef struct QlixHLXCertificate QlixHLXCertificate;
typedef struct QlixHLXCredential QlixHLXCredential;
/* The library has one registration of its own, which null stands for. */
typedef struct QlixHLXRegistration QlixHLXRegistration;

/* Bytes of the caller, or of the library where a function gives them out. */
typedef struct HLXBlob {
    const uint8_t* data;
    uint32_t size;
} HLXBlob;

typedef struct HLXBlobArray {
    const HLXBlob* blobs;
    uint32_t count;
} HLXBlobArray;

/* The argument of HLXInitialize. All four fields are zero. */
typedef struct HLXInitRecord {
    uint32_t reserved[4];
} HLXInitRecord;

/* What the library decided for one sample. */
typedef struct HLXEncryptionInfo {
    const char* const* filterNames; /* zero-terminated texts, the library's */
    uint32_t filterCount;           /* the last name is the one in force */
    uint32_t encrypted;             /* 0: the sample stays in the clear */
    uint32_t encryptedSize;         /* bytes of encrypted output */
    uint32_t ivSize;
} HLXEncryptionInfo;

enum { HLX_TRACK_VIDEO = 1, HLX_TRACK_AUDIO = 2, HLX_TRACK_DATA = 4 };

/* A moment of universal time. */
typedef struct HLXCalendarTime {
    uint32_t year;
    uint32_t month; /* from 1 */
    uint32_t day;   /* from 1 */
    uint32_t hour;
    uint32_t minute;
    uint32_t second;
} HLXCalendarTime;

typedef struct HLXCertificateDates {
    HLXCalendarTime notBefore;
    HLXCalendarTime notAfter;
} HLXCertificateDates;

/* An entry of the first list of `prepareStreaming`. */
typedef struct HLXDigestEntry {
    uint32_t word;
    const char* digestOid; /* dotted form, only that of SHA-256 is known */
    uint32_t digestOidSize;
    const HLXBlob* digest;
    const void* reserved; /* null */
} HLXDigestEntry;

typedef struct HLXDigestList {
    const HLXDigestEntry* entries;
    uint32_t count;
} HLXDigestList;

/* An entry of the second list: the first text always, the others may be null. */
typedef struct HLXTextEntry {
    const char* texts[4];
} HLXTextEntry;

typedef struct HLXTextList {
    const HLXTextEntry* entries;
    uint32_t count;
} HLXTextList;

typedef struct HLXEncryptorTable {
    uintptr_t version; /* 11 */
    /* 1: makes an encryptor. The key bytes are not kept, only what is derived from them. */
    HLXResult (*create)(QlixHLXEncryptor** encryptor, const uint8_t* key, uint32_t keySize,
                        const char* contentId, uint32_t contentIdSize, uint32_t encryptVideo,
                        uint32_t encryptAudio, uint32_t encryptData, uint32_t videoLevel,
                        uint32_t msUnencrypted, uint32_t one, uint32_t zero, const void* null);
    /* 2: makes the protection metadata. With `standalone` 1 there are no extra blobs, with 0 the
     * array holds what `prepareStreaming` gave out. */
    HLXResult (*generateMetadata)(QlixHLXEncryptor* encryptor, const char* serverUrl,
                                  uint32_t serverUrlSize, QlixHLXCertificate* transportCertificate,
                                  QlixHLXCertificate* serverCertificate,
                                  QlixHLXCredential* credential, const HLXBlobArray* policies,
                                  uint32_t zero, uint32_t standalone, const HLXBlobArray* extras,
                                  const void* null1, const void* null2, QlixHLXMetadata** metadata);
    /* 3: encrypts the sample that the last `prepareSample` announced. `output` has room for
     * `*outputSize` bytes and must not overlap `data`; both sizes come back as what was written. */
    HLXResult (*encrypt)(QlixHLXEncryptor* encryptor, const uint8_t* data, uint32_t size,
                         uint8_t* output, uint32_t* outputSize, const void* null1,
                         const void* null2, const void* null3, const void* null4, uint8_t* iv,
                         uint32_t* ivSize);
    /* 4: decides about one sample of a track class at a time in milliseconds. NAL units are told
     * apart by length fields of `nalLengthSize` bytes, 4; `isAvc` is not needed for that. */
    HLXResult (*prepareSample)(QlixHLXEncryptor* encryptor, const uint8_t* data, uint32_t size,
                               uint32_t trackClass, uint64_t timeMs, const void* null1,
                               const void* null2, HLXEncryptionInfo* info, uint32_t isAvc,
                               uint32_t nalLengthSize);
    /* 5: makes the record of a streaming presentation. The bytes given out are the encryptor's and
     * stand until it goes or the next call. A second credential signs them; without, null. */
    HLXResult (*prepareStreaming)(QlixHLXEncryptor* encryptor, const void* null1,
                                  const HLXBlob* policy, const void* null2, const void* null3,
                                  const void* null4, const char* serverUrl,
                                  QlixHLXCredential* secondCredential, uint32_t one,
                                  QlixHLXCertificate* const* extraCertificates,
                                  uint32_t extraCertificateCount, const HLXDigestList* digests,
                                  const HLXTextList* texts, HLXBlob* blob, const void* null5);
    void (*unused[4])(void); /* 6 to 9 */
    /* 10: the times between which a certificate is valid, both included. */
    HLXResult (*certificateDates)(QlixHLXCertificate* certificate, HLXCertificateDates* dates);
} HLXEncryptorTable;

typedef struct HLXMetadataTable {
    uintptr_t version;       /* 5 */
    void (*unused[2])(void); /* 1, 2 */
    /* 3 */
    HLXResult (*size)(QlixHLXMetadata* metadata, uint32_t* size);
    /* 4: copies all bytes; the buffer has room for `size` bytes. */
    HLXResult (*copy)(QlixHLXMetadata* metadata, uint8_t* buffer, uint32_t* copied);
} HLXMetadataTable;

typedef struct HLXRegistrationTable {
    uintptr_t version;     /* 6 */
    void (*unused1)(void); /* 1 */
    /* 2: one DER certificate whose key can receive keys */
    HLXResult (*certificateFromBytes)(QlixHLXRegistration* registration, const uint8_t* bytes,
                                      uint32_t size, QlixHLXCertificate** certificate);
    void (*unused3)(void); /* 3 */
    /* 4: a PFX with a private key and its certificate */
    HLXResult (*credentialFromBytes)(QlixHLXRegistration* registration, const uint8_t* bytes,
                                     uint32_t size, const char* password, uint32_t passwordSize,
                                     QlixHLXCredential** credential);
} HLXRegistrationTable;

/* Calls nest: the library stops with the last HLXTerminate. Until then the process writes no core
 * files, which would hold keys. The first call makes OpenSSL wipe all memory that it gives back, if
 * the process hasn't used OpenSSL before. */
HLXResult HLXInitialize(const HLXInitRecord* record);
/* Stopping wipes the secrets of all live handles; they can only be given back after it. */
HLXResult HLXTerminate(void);
/* Gives a handle back. Null is accepted. */
HLXResult HLXRelease(void* handle);

HLXResult HLX_GetEncryptorInterface(const HLXEncryptorTable** table);
HLXResult HLX_GetMetadataInterface(const HLXMetadataTable** table);
HLXResult HLX_GetRegistrationInterface(const HLXRegistrationTable** table);

#ifdef __cplusplus
}
#endif
