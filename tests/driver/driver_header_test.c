/* The public driver header as a C host sees it: it compiles as C, its
 * records have the platform's layout, and a session through the export works. */
#include <stddef.h>
#include <string.h>

#include "vantaro/driver.h"

_Static_assert(sizeof(ICOPEN) == 56, "ICOPEN");
_Static_assert(offsetof(ICOPEN, dwError) == 24, "ICOPEN.dwError");
_Static_assert(offsetof(ICOPEN, dnDevNode) == 48, "ICOPEN.dnDevNode");
_Static_assert(sizeof(ICINFO) == 568, "ICINFO");
_Static_assert(offsetof(ICINFO, szName) == 24, "ICINFO.szName");
_Static_assert(offsetof(ICINFO, szDescription) == 56, "ICINFO.szDescription");
_Static_assert(offsetof(ICINFO, szDriver) == 312, "ICINFO.szDriver");
_Static_assert(sizeof(ICCOMPRESS) == 88, "ICCOMPRESS");
_Static_assert(offsetof(ICCOMPRESS, lpbiInput) == 24, "ICCOMPRESS.lpbiInput");
_Static_assert(offsetof(ICCOMPRESS, lFrameNum) == 56, "ICCOMPRESS.lFrameNum");
_Static_assert(offsetof(ICCOMPRESS, lpPrev) == 80, "ICCOMPRESS.lpPrev");
_Static_assert(sizeof(ICDECOMPRESS) == 48, "ICDECOMPRESS");
_Static_assert(offsetof(ICDECOMPRESS, lpbiOutput) == 24, "ICDECOMPRESS.lpbiOutput");
_Static_assert(sizeof(BITMAPINFOHEADER) == 40, "BITMAPINFOHEADER");

int DriverHeaderSizes(uint32_t* sizes) {
    sizes[0] = (uint32_t)sizeof(ICOPEN);
    sizes[1] = (uint32_t)sizeof(ICINFO);
    sizes[2] = (uint32_t)sizeof(ICCOMPRESS);
    sizes[3] = (uint32_t)sizeof(ICDECOMPRESS);
    sizes[4] = (uint32_t)sizeof(BITMAPINFOHEADER);
    return 5;
}

/* 0 on success, else the number of the step that went wrong. */
int64_t DriverSessionFromC(void) {
    ICOPEN open;
    memset(&open, 0, sizeof open);
    open.dwSize = sizeof open;
    open.fccType = ICTYPE_VIDEO;
    open.fccHandler = VTC_FOURCC('v', 't', 'q', '3');
    const int64_t id = DriverProc(0, NULL, DRV_OPEN, 0, (int64_t)(intptr_t)&open);
    if (id == 0) return 1;

    ICINFO info;
    memset(&info, 0, sizeof info);
    if (DriverProc((uint64_t)id, NULL, ICM_GETINFO, (int64_t)(intptr_t)&info, 0) != 568) return 2;
    if (info.fccHandler != VTC_FOURCC('V', 'T', 'Q', '3')) return 3;
    static const char expected[] = "Quorin Vantaro 4:2:2:4 (Alpha)";
    for (size_t i = 0; i < sizeof expected; ++i) {
        if (info.szDescription[i] != (VtcWideChar)expected[i]) return 4;
    }

    BITMAPINFOHEADER source;
    memset(&source, 0, sizeof source);
    source.biSize = sizeof source;
    source.biWidth = 32;
    source.biHeight = 32;
    source.biBitCount = 24;
    source.biCompression = VTC_FOURCC('U', 'Y', 'V', 'Y');
    if (DriverProc((uint64_t)id, NULL, ICM_COMPRESS_QUERY, (int64_t)(intptr_t)&source, 0) != ICERR_OK) {
        return 5;
    }
    if (DriverProc((uint64_t)id, NULL, DRV_CLOSE, 0, 0) != 1) return 6;
    return 0;
}
