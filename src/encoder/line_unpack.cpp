// Scalar line unpacking for the loaders, and the choice of loader kernels.
#include "codec/global_tables.h"
#include "codec/kernels.h"
#include "encoder/encoder_kernels.h"

namespace vantaro::encoder {
namespace {

void Luma8(const uint8_t* s, LineSamples& out) {
  for (int i = 0; i < 16; ++i) out.y[i] = s[i];
}

void LumaAlpha(const uint8_t* s, LineSamples& out) {
  for (int i = 0; i < 16; ++i) {
    out.y[i] = s[2 * i];
    out.a[i] = s[2 * i + 1];
  }
}

template <int kPairs>
void ChromaPairs(const uint8_t* s, LineSamples& out) {
  for (int i = 0; i < kPairs; ++i) {
    out.u[i] = s[2 * i];
    out.v[i] = s[2 * i + 1];
  }
}

// Packed 4:2:2 with luma at byte kY of each pair and U, V at bytes kU, kV of
// each group of four.
template <int kY, int kU, int kV>
void Packed422(const uint8_t* s, LineSamples& out) {
  for (int i = 0; i < 16; ++i) out.y[i] = s[2 * i + kY];
  for (int k = 0; k < 8; ++k) {
    out.u[k] = s[4 * k + kU];
    out.v[k] = s[4 * k + kV];
  }
}

// Luma and alpha both come from byte 0; byte 1 is never read.
void Ayuv(const uint8_t* s, LineSamples& out) {
  for (int i = 0; i < 16; ++i) {
    out.y[i] = s[4 * i];
    out.a[i] = s[4 * i];
    out.u[i] = s[4 * i + 2];
    out.v[i] = s[4 * i + 3];
  }
}

int16_t Clamp255(int16_t v) { return static_cast<int16_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// Three table entries added lane by lane in 16-bit wrap, shifted right by 5.
// Y as it stands; U and V saturate to 0..255 as a pack to bytes does.
template <int kBytes>
void Rgb(const uint8_t* s, LineSamples& out) {
  const GlobalTables& tables = Tables();
  for (int i = 0; i < 16; ++i) {
    const ColorLanes& b = tables.lutBlue[s[kBytes * i]];
    const ColorLanes& g = tables.lutGreen[s[kBytes * i + 1]];
    const ColorLanes& r = tables.lutRed[s[kBytes * i + 2]];
    int16_t lane[3];
    for (int l = 0; l < 3; ++l) {
      const uint16_t sum = static_cast<uint16_t>(static_cast<uint16_t>(b.lane[l]) +
                                                 static_cast<uint16_t>(g.lane[l]) +
                                                 static_cast<uint16_t>(r.lane[l]));
      lane[l] = static_cast<int16_t>(static_cast<int16_t>(sum) >> 5);
    }
    out.u[i] = Clamp255(lane[0]);
    out.v[i] = Clamp255(lane[1]);
    out.y[i] = lane[2];
    if constexpr (kBytes == 4) out.a[i] = s[4 * i + 3];
  }
}

template <int kY, int kU, int kV>
void Packed422Rows(const uint8_t* source, ptrdiff_t lineDistance, int16_t* yLeft, int16_t* yRight, int16_t* u,
                   int16_t* v, int32_t lines) {
  for (int32_t r = 0; r < lines; ++r) {
    LineSamples l;
    Packed422<kY, kU, kV>(source + lineDistance * r, l);
    for (int c = 0; c < 8; ++c) {
      yLeft[8 * r + c] = l.y[c];
      yRight[8 * r + c] = l.y[c + 8];
      u[8 * r + c] = l.u[c];
      v[8 * r + c] = l.v[c];
    }
  }
}

void PlaneRows16(const uint8_t* source, ptrdiff_t lineDistance, int16_t* left, int16_t* right, int32_t lines) {
  for (int32_t r = 0; r < lines; ++r) {
    const uint8_t* s = source + lineDistance * r;
    for (int c = 0; c < 8; ++c) {
      left[8 * r + c] = s[c];
      right[8 * r + c] = s[c + 8];
    }
  }
}

void PlaneRows8(const uint8_t* source, ptrdiff_t lineDistance, int16_t* out, int32_t lines) {
  for (int32_t r = 0; r < lines; ++r) {
    for (int c = 0; c < 8; ++c) out[8 * r + c] = source[lineDistance * r + c];
  }
}

constexpr LoaderKernels kScalarLoaders = {
    Luma8,          LumaAlpha,          ChromaPairs<8>, ChromaPairs<16>, Packed422<0, 1, 3>,
    Packed422<1, 0, 2>, Ayuv,           Rgb<3>,         Rgb<4>,
    {Packed422Rows<0, 1, 3>, Packed422Rows<1, 0, 2>}, PlaneRows16, PlaneRows8,
};

}  // namespace

const LoaderKernels kLoaderKernelsScalar = kScalarLoaders;

}  // namespace vantaro::encoder
