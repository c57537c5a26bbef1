/* The public header as a C host compiles it: the platform's record layouts,
 * and a session through the export. */
#include <stddef.h>
#include <string.h>

#include "vantaro/driver.h"

_Static_assert(sizeof(ICOPEN) == 56 && offsetof(ICOPEN, dwError) == 24, "ICOPEN");
_Static_assert(sizeof(ICINFO) == 568 && offsetof(ICINFO, szDescription) == 56 &&
               offsetof(ICINFO, szDriver) == 312, "ICINFO");
_Static_assert(sizeof(ICCOMPRESS) == 88 && offsetof(ICCOMPRESS, lpdwFlags) == 48 &&
               offsetof(ICCOMPRESS, dwQuality) == 64 && offsetof(ICCOMPRESS, lpPrev) == 80, "ICCOMPRESS");
_Static_assert(sizeof(ICDECOMPRESS) == 48 && offsetof(ICDECOMPRESS, ckid) == 40, "ICDECOMPRESS");
_Static_assert(sizeof(BITMAPINFOHEADER) == 40, "BITMAPINFOHEADER");

/* 0 on success, else the failing step. */
int64_t DriverSessionFromC(void) {
    ICOPEN open;
    memset(&open, 0, sizeof open);
    open.fccType = ICTYPE_VIDEO;
    open.fccHandler = VTC_FOURCC('v', 't', 'q', '3');
    const int64_t id = DriverProc(0, NULL, DRV_OPEN, 0, (int64_t)(intptr_t)&open);
    if (id == 0) return 1;
    ICINFO info;
    if (DriverProc((uint64_t)id, NULL, ICM_GETINFO, (int64_t)(intptr_t)&info, 0) != 568) return 2;
    static const char expected[] = "Quorin Vantaro 4:2:2:4 (Alpha)";
    for (size_t i = 0; i < sizeof expected; ++i) {
        if (info.szDescription[i] != (VtcWideChar)expected[i]) return 3;
    }
    if (DriverProc((uint64_t)id, NULL, DRV_CLOSE, 0, 0) != 1) return 4;
    return 0;
}
