// The decoder's slice walks: one skeleton over a macroblock decoder, an
// output layout, a chroma family and an alpha source, and a table of its
// instantiations indexed by arm, colour space and alpha. Nothing inside the
// macroblock loop tests the format.
#include <array>

#include "codec/slice_layout.h"
#include "codec/slice_walks.h"
#include "decoder/macroblock_decoder.h"
#include "decoder/output_layouts.h"
#include "decoder/plane_set_stores.h"
#include "decoder/planes_cursor.h"

namespace vantaro::decoder {
namespace {

// Decodes the macroblock rows of `slice`: rows slice, slice + 4, ... of the
// field, then the partial row if this slice owns it. Predictors restart at
// every row. Every macroblock of the partial row is read and transformed
// whole; only its first `lines` lines are stored.
template <Family F, AlphaCoding A, class Layout>
Status DecodeSliceWalk(const CodecInstance& inst, const Kernels& kernels, uint8_t* picture,
                       uint8_t* chroma, BitReader& reader, int32_t stride, uint32_t slice) {
  using Shape = ShapeOf<F, A>;
  const int32_t mbColumns = inst.width / 16;
  const SliceRows rows = SliceRowsFor(inst.height, slice);
  if (rows.fullRows == 0 && !rows.hasPartialRow) return Status::kOk;
  if (Layout::kPlanar && chroma == nullptr && mbColumns > 0) return Status::kStreamFault;

  const size_t readable = reader.end > reader.base ? static_cast<size_t>(reader.end - reader.base) : 0;
  const MacroblockContext ctx{BlockDecodeTablesInstance(), *kernels.blocks, Shape::Walk(kernels.extractIndex),
                              ReadAlphaPlaneFor(kernels.extractIndex), inst.multiplierTable,
                              StreamView{reader.base, readable}};
  const StoreKernels& storeKernels = *kernels.stores;
  const uint64_t limit = ctx.stream.SizeInBits();
  alignas(16) MacroblockScratch scratch;
  uint64_t bitPos = reader.bitPos;
  const int64_t t = stride;

  auto decodeRow = [&](int32_t row, int32_t lines) {
    auto at = Layout::RowStart(inst, picture, chroma, t, slice, row);
    scratch.ResetPredictors();
    for (int32_t mb = 0; mb < mbColumns; ++mb) {
      if (!DecodeMacroblock<Shape, A == AlphaCoding::kRunValue>(ctx, scratch, bitPos) || bitPos > limit) return false;
      Layout::template Store<F, A>(storeKernels, scratch, at, lines);
      Layout::Next(at);
    }
    return true;
  };

  for (int32_t row = 0; row < rows.fullRows; ++row) {
    if (!decodeRow(row, 16)) return Status::kStreamFault;
  }
  if (rows.hasPartialRow && !decodeRow(rows.fullRows, rows.partialLines)) return Status::kStreamFault;
  reader.bitPos = bitPos;
  return Status::kOk;
}

using WalkRow = std::array<DecodeSliceWalkFn, kLayoutCount>;

// One row of the table: every layout for one family and alpha coding.
// Spaces 0 and 7 have no walk.
template <Family F, AlphaCoding A>
constexpr WalkRow MakeWalkRow() {
  return {nullptr,
          &DecodeSliceWalk<F, A, PlanesCursor<PlanarStore<kCsNV12>>>,
          &DecodeSliceWalk<F, A, PlanesCursor<PlanarStore<kCsNV16>>>,
          &DecodeSliceWalk<F, A, PlanesCursor<PlanarStore<kCsNV24>>>,
          &DecodeSliceWalk<F, A, PlanesCursor<PlanarStore<kCsYA20>>>,
          &DecodeSliceWalk<F, A, PlanesCursor<PlanarStore<kCsYA22>>>,
          &DecodeSliceWalk<F, A, PlanesCursor<PlanarStore<kCsYA44>>>,
          nullptr,
          &DecodeSliceWalk<F, A, PlanesCursor<Packed422Store<kCsYUY2>>>,
          &DecodeSliceWalk<F, A, PlanesCursor<Packed422Store<kCsUYVY>>>,
          &DecodeSliceWalk<F, A, PlanesCursor<Packed422Store<kCsUYVA>>>,
          &DecodeSliceWalk<F, A, PlanesCursor<AyuvStore>>,
          &DecodeSliceWalk<F, A, PlanesCursor<RgbStore<kCsRGB24>>>,
          &DecodeSliceWalk<F, A, PlanesCursor<RgbStore<kCsRGB32>>>,
          &DecodeSliceWalk<F, A, PlaneSetStore<kPlanesYUV420>>,
          &DecodeSliceWalk<F, A, PlaneSetStore<kPlanesYUVA420>>,
          &DecodeSliceWalk<F, A, PlaneSetStore<kPlanesYUV422>>,
          &DecodeSliceWalk<F, A, PlaneSetStore<kPlanesYUVA422>>,
          &DecodeSliceWalk<F, A, PlaneSetStore<kPlanesYUV444>>,
          &DecodeSliceWalk<F, A, PlaneSetStore<kPlanesYUVA444>>};
}

constexpr WalkRow kWalks420 = MakeWalkRow<Family::k420, AlphaCoding::kNone>();
constexpr WalkRow kWalks420Rle = MakeWalkRow<Family::k420, AlphaCoding::kRunValue>();
constexpr WalkRow kWalks422 = MakeWalkRow<Family::k422, AlphaCoding::kNone>();
constexpr WalkRow kWalks422Rle = MakeWalkRow<Family::k422, AlphaCoding::kRunValue>();
constexpr WalkRow kWalks444 = MakeWalkRow<Family::k444, AlphaCoding::kNone>();
constexpr WalkRow kWalks444Rle = MakeWalkRow<Family::k444, AlphaCoding::kRunValue>();
// The DCT-alpha arms behave alike whatever hasAlpha says.
constexpr WalkRow kWalks422Dct = MakeWalkRow<Family::k422, AlphaCoding::kDct>();
constexpr WalkRow kWalks444Dct = MakeWalkRow<Family::k444, AlphaCoding::kDct>();

}  // namespace
}  // namespace vantaro::decoder

namespace vantaro {

// 4:2:0 with DCT alpha is reachable by no stream variant and has no walk.
DecodeSliceWalkFn FindDecodeSliceWalk(ChromaArm arm, uint32_t colorSpace, bool hasAlpha) {
  using namespace decoder;
  if (colorSpace >= kLayoutCount) return nullptr;
  switch (arm) {
    case ChromaArm::k420: return (hasAlpha ? kWalks420Rle : kWalks420)[colorSpace];
    case ChromaArm::k422: return (hasAlpha ? kWalks422Rle : kWalks422)[colorSpace];
    case ChromaArm::k444: return (hasAlpha ? kWalks444Rle : kWalks444)[colorSpace];
    case ChromaArm::k422Dct: return kWalks422Dct[colorSpace];
    case ChromaArm::k444Dct: return kWalks444Dct[colorSpace];
    case ChromaArm::k420Dct: case ChromaArm::kNone: return nullptr;
  }
  return nullptr;
}

}  // namespace vantaro
