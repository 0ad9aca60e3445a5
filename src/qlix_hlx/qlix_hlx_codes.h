#pragma once

/* Results of the encryption library, one table.
 *
 * 0 is success. A result whose low 16 bits are 256 says that a certificate was refused; its high
 * 16 bits say why (HLX_CERT_...). Every other result is one of the HLX_ERROR_ codes. */

#define HLX_OK 0u

/* Low 16 bits of a refused certificate. */
#define HLX_ERROR_INVALID_CERTIFICATE 256u

enum {
    /* a call before HLXInitialize, or after the last HLXTerminate */
    HLX_ERROR_NOT_INITIALIZED = 2,
    /* a null pointer, or a reserved argument that isn't zero */
    HLX_ERROR_BAD_ARGUMENT = 3,
    /* not a live handle of the kind that the call needs */
    HLX_ERROR_BAD_HANDLE = 4,
    HLX_ERROR_OUT_OF_MEMORY = 5,
    /* the cryptographic provider refused an operation that it should know */
    HLX_ERROR_CRYPTO = 6,
    HLX_ERROR_INTERNAL = 7,

    /* the common key has fewer than 16 bytes */
    HLX_ERROR_COMMON_KEY_TOO_SHORT = 16,
    HLX_ERROR_CONTENT_ID_EMPTY = 17,
    /* the content id has more than 512 bytes */
    HLX_ERROR_CONTENT_ID_TOO_LONG = 18,
    /* the video level isn't 0, 1 or 2 */
    HLX_ERROR_BAD_VIDEO_LEVEL = 19,

    /* the bytes are no PFX, or more than one */
    HLX_ERROR_CREDENTIAL_UNREADABLE = 32,
    HLX_ERROR_CREDENTIAL_WRONG_PASSWORD = 33,
    HLX_ERROR_CREDENTIAL_WITHOUT_KEY = 34,
    /* no certificate of the PFX belongs to its private key */
    HLX_ERROR_CREDENTIAL_MISMATCH = 35,

    HLX_ERROR_POLICY_EMPTY = 48,
    /* a policy has more than 65,536 bytes: it is repeated in every segment file */
    HLX_ERROR_POLICY_TOO_LARGE = 49,
    HLX_ERROR_SERVER_URL_EMPTY = 50,
    /* a list names another digest than SHA-256 */
    HLX_ERROR_UNKNOWN_DIGEST = 51,

    /* encrypt without a prepare that announced it, or with another size */
    HLX_ERROR_SAMPLE_NOT_PREPARED = 64,
    HLX_ERROR_SAMPLE_TOO_LARGE = 65,
    HLX_ERROR_OUTPUT_TOO_SMALL = 66
};

/* High 16 bits of a refused certificate. */
enum {
    /* the bytes don't begin with a DER certificate */
    HLX_CERT_NOT_IDENTIFIED = 1,
    /* further bytes behind the certificate: a chain, say */
    HLX_CERT_TRAILING_BYTES = 2,
    /* neither RSA of at least 2048 bits nor EC on P-256 */
    HLX_CERT_WEAK_OR_UNKNOWN_KEY = 3,
    /* the key usage forbids what the certificate is given for */
    HLX_CERT_KEY_USAGE = 4,
    HLX_CERT_NOT_YET_VALID = 5,
    HLX_CERT_EXPIRED = 6
};
