#include "decoder/store_kernels.h"

#include "codec/global_tables.h"
#include "codec/kernels.h"

namespace vantaro::decoder {
namespace {

void PackLineScalar(const int16_t* left, const int16_t* right, uint8_t* out) {
  for (int c = 0; c < 8; ++c) {
    out[c] = Pack(left[c]);
    out[c + 8] = Pack(right[c]);
  }
}

void RawPairsScalar(const int16_t* u, const int16_t* v, uint8_t* out) {
  for (int j = 0; j < 8; ++j) {
    const uint16_t word = static_cast<uint16_t>((static_cast<uint16_t>(v[j]) << 8) |
                                                static_cast<uint16_t>(u[j]));
    out[2 * j] = static_cast<uint8_t>(word);
    out[2 * j + 1] = static_cast<uint8_t>(word >> 8);
  }
}

void EvenPairsScalar(const int16_t* uLeft, const int16_t* uRight, const int16_t* vLeft,
                     const int16_t* vRight, uint8_t* out) {
  for (int j = 0; j < 4; ++j) {
    out[2 * j] = Pack(uLeft[2 * j]);
    out[2 * j + 1] = Pack(vLeft[2 * j]);
    out[2 * j + 8] = Pack(uRight[2 * j]);
    out[2 * j + 9] = Pack(vRight[2 * j]);
  }
}

void AverageScalar(const uint8_t* a, const uint8_t* b, uint8_t* out) {
  for (int i = 0; i < 16; ++i) out[i] = static_cast<uint8_t>((a[i] + b[i] + 1) >> 1);
}

void InterleaveScalar(const uint8_t* first, const uint8_t* second, uint8_t* out) {
  for (int i = 0; i < 16; ++i) {
    out[2 * i] = first[i];
    out[2 * i + 1] = second[i];
  }
}

template <bool kChromaFirst>
void Packed422Scalar(const int16_t* yLeft, const int16_t* yRight, const int16_t* u, const int16_t* v,
                     int32_t chromaShift, uint8_t* out, int64_t stride, int32_t lines) {
  for (int32_t r = 0; r < lines; ++r) {
    uint8_t luma[16], pairs[16];
    PackLineScalar(yLeft + 8 * r, yRight + 8 * r, luma);
    RawPairsScalar(u + 8 * (r >> chromaShift), v + 8 * (r >> chromaShift), pairs);
    if (kChromaFirst) {
      InterleaveScalar(pairs, luma, out + r * stride);
    } else {
      InterleaveScalar(luma, pairs, out + r * stride);
    }
  }
}

void PackStripScalar(const int16_t* left, const int16_t* right, uint8_t* out, int64_t stride,
                     int32_t lines) {
  for (int32_t r = 0; r < lines; ++r) PackLineScalar(left + 8 * r, right + 8 * r, out + r * stride);
}

void PackChromaStripScalar(const int16_t* u, const int16_t* v, int32_t chromaShift, uint8_t* outU,
                           int64_t strideU, uint8_t* outV, int64_t strideV, int32_t lines) {
  for (int32_t r = 0; r < lines; ++r) {
    const int32_t c = 8 * (r >> chromaShift);
    for (int j = 0; j < 8; ++j) {
      outU[r * strideU + j] = Pack(u[c + j]);
      outV[r * strideV + j] = Pack(v[c + j]);
    }
  }
}

template <int kPixelBytes>
void RgbLineScalar(const uint8_t* y, const uint8_t* u, const uint8_t* v, const uint8_t* alpha, uint8_t* out) {
  const GlobalTables& tables = Tables();
  for (int c = 0; c < 16; ++c) {
    for (int lane = 0; lane < 3; ++lane) {
      const int16_t sum = static_cast<int16_t>(tables.lutLuma[y[c]].lane[lane] + tables.lutCb[u[c]].lane[lane] +
                                               tables.lutCr[v[c]].lane[lane]);
      out[kPixelBytes * c + lane] = Pack(static_cast<int16_t>(sum >> 5));
    }
    if constexpr (kPixelBytes == 4) out[4 * c + 3] = alpha[c];
  }
}

}  // namespace

const StoreKernels kStoreKernelsScalar = {PackLineScalar,   RawPairsScalar,
                                          EvenPairsScalar,  AverageScalar,
                                          InterleaveScalar, {Packed422Scalar<false>, Packed422Scalar<true>},
                                          PackStripScalar,  PackChromaStripScalar,
                                          {RgbLineScalar<3>, RgbLineScalar<4>}};

}  // namespace vantaro::decoder
