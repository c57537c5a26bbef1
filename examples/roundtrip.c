/* Compresses one synthetic 4:2:2 frame and decodes it again through the
 * direct functions, then reports the stream size and the PSNR of luma. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "vantaro/vantaro.h"

int main(void) {
    const int32_t width = 320, height = 240, stride = width * 2;
    BITMAPINFOHEADER header;
    memset(&header, 0, sizeof header);
    header.biSize = sizeof header;
    header.biWidth = width;
    header.biHeight = height;
    header.biBitCount = 16;
    header.biCompression = VTC_FOURCC('Y', 'U', 'Y', '2');

    uint8_t* picture = malloc((size_t)stride * height);
    uint8_t* decoded = calloc((size_t)stride * height, 1);
    uint8_t* stream = malloc((size_t)width * height * 6);
    if (!picture || !decoded || !stream) return 1;
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            uint8_t* p = picture + y * stride + x * 2;
            p[0] = (uint8_t)(16 + (x * 219) / width);         /* Y: a horizontal ramp */
            p[1] = (uint8_t)((x & 1) ? 128 + y / 4 : 128 - y / 4); /* V or U */
        }
    }

    void* encoder = VTC_CompressFieldBeginQuality(&header, VTC_FOURCC('V', 'T', 'Q', '2'), 96);
    const int64_t size = VTC_CompressFrame(encoder, stream, picture, stride);
    VTC_CompressFieldEnd(encoder);

    void* decoder = VTC_DecompressFieldBegin(&header, VTC_FOURCC('V', 'T', 'Q', '2'));
    VTC_DecompressFrame(decoder, decoded, stream, stride);
    VTC_DecompressFieldEnd(decoder);

    double error = 0;
    for (int32_t i = 0; i < stride * height; i += 2) {
        const double d = (double)picture[i] - (double)decoded[i];
        error += d * d;
    }
    const double mse = error / ((double)width * height);
    printf("VTQ2 %dx%d: %lld bytes (reported), luma PSNR %.2f dB\n", width, height,
           (long long)size, mse > 0 ? 10 * log10(255.0 * 255.0 / mse) : 99.0);
    free(picture);
    free(decoded);
    free(stream);
    return size > 0 ? 0 : 1;
}
