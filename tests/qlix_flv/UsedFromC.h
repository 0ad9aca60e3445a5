#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// Opens nothing, in C: the result of asking a reader that isn't there.
unsigned askNobodyFromC(void);
/// Offsets of the words that callers read, in C: data size, type and time of a tag.
int hasTheLayoutInC(void);

#ifdef __cplusplus
}
#endif
