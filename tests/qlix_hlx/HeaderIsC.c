/* The interface is C: this file has to compile as such. */
#include "qlix_hlx/qlix_hlx.h"

int hlxHeaderIsC(void);

int hlxHeaderIsC(void) {
    HLXInitRecord record = {{0, 0, 0, 0}};
    return record.reserved[3] == HLX_OK;
}
