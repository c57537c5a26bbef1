/* A program written against an installed tree alone: it must compile as C,
 * link the library and agree with the header's version. */
#include <stdio.h>

#include <vantaro/vantaro.h>

int main(void) {
    int32_t coded_width = 0, coded_height = 0;
    if (vantaro_version() != VANTARO_VERSION) {
        fprintf(stderr, "header %u, library %u\n", (unsigned)VANTARO_VERSION, (unsigned)vantaro_version());
        return 1;
    }
    if (vantaro_coded_size(17, 3, &coded_width, &coded_height) != VANTARO_OK || coded_width != 32 ||
        coded_height != 4) {
        fprintf(stderr, "coded size %dx%d\n", (int)coded_width, (int)coded_height);
        return 1;
    }
    printf("vantaro %s\n", vantaro_version_string());
    return 0;
}
