/* Encodes one 4:2:0 planar picture of an odd size through the native API,
 * decodes it again and reports the frame size and the PSNR of luma. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "vantaro/vantaro.h"

int main(void) {
    const int32_t width = 173, height = 97;
    const uint32_t fourcc = VANTARO_FOURCC_VTQ0;
    const size_t picture_bytes = vantaro_picture_size(VANTARO_FORMAT_YUV420P, width, height);
    const size_t bound = vantaro_frame_bound(fourcc, width, height);
    uint8_t* source = malloc(picture_bytes);
    uint8_t* decoded = malloc(picture_bytes);
    uint8_t* frame = malloc(bound);
    vantaro_picture in, out;
    vantaro_encoder* encoder = NULL;
    vantaro_decoder* decoder = NULL;
    size_t written = 0;
    vantaro_status status;
    if (!source || !decoded || !frame) return 1;
    for (size_t i = 0; i < picture_bytes; ++i) source[i] = (uint8_t)(64 + (i * 7 % 128));
    vantaro_picture_fill(&in, VANTARO_FORMAT_YUV420P, width, height, source, picture_bytes);
    vantaro_picture_fill(&out, VANTARO_FORMAT_YUV420P, width, height, decoded, picture_bytes);

    /* Slices side by side on two threads; any count gives the same bytes. */
    vantaro_options options;
    vantaro_options_default(&options);
    options.threads = 2;
    status = vantaro_encoder_create(fourcc, width, height, 90, &options, &encoder);
    if (status == VANTARO_OK) status = vantaro_encode(encoder, &in, frame, bound, &written);
    vantaro_encoder_destroy(encoder);
    if (status == VANTARO_OK) status = vantaro_decoder_create(fourcc, width, height, &options, &decoder);
    if (status == VANTARO_OK) status = vantaro_decode(decoder, frame, written, &out, NULL);
    vantaro_decoder_destroy(decoder);
    if (status != VANTARO_OK) {
        fprintf(stderr, "failed: %s\n", vantaro_status_string(status));
        return 1;
    }
    double error = 0;
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const double d = (double)in.planes[0][y * in.strides[0] + x] -
                             (double)out.planes[0][y * out.strides[0] + x];
            error += d * d;
        }
    }
    const double mse = error / ((double)width * height);
    const double psnr = mse > 0 ? 10 * log10(255.0 * 255.0 / mse) : 99.0;
    printf("VTQ0 %dx%d from YUV420P: %zu bytes (bound %zu), luma PSNR %.2f dB\n", width, height,
           written, bound, psnr);
    free(source);
    free(decoded);
    free(frame);
    return psnr > 30.0 ? 0 : 1;
}
