// SSE2 twins of the scalar kernels in inverse_transform.cpp: the same
// arithmetic, lane for lane. pmaddwd is the row pass's pair (u * a + w * b,
// 32-bit wrap); pmulhw, paddsw and psubsw are the column pass's mulhi, +s, -s.
#include "decoder/inverse_transform.h"

#if defined(VANTARO_KERNELS_SSE2)
#include <emmintrin.h>

#include "decoder/block_decode_tables.h"

namespace vantaro::decoder {
namespace {

__m128i Load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
void Store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }

void ClearBlocksSse2(int16_t* blocks, int32_t count) {
  const __m128i zero = _mm_setzero_si128();
  for (int32_t i = 0; i < count * 8; ++i) Store(blocks + i * 8, zero);
}

// One row: inputs reordered to x0,x2,x1,x3,x4,x6,x5,x7 so that each pair of
// inputs is one 32-bit lane, broadcast against the row table's lanes.
__m128i RowPass(__m128i x, const RowTableSet& t, int32_t rounding) {
  x = _mm_shufflelo_epi16(x, _MM_SHUFFLE(3, 1, 2, 0));
  x = _mm_shufflehi_epi16(x, _MM_SHUFFLE(3, 1, 2, 0));
  const __m128i x02 = _mm_shuffle_epi32(x, 0x00);
  const __m128i x13 = _mm_shuffle_epi32(x, 0x55);
  const __m128i x46 = _mm_shuffle_epi32(x, 0xAA);
  const __m128i x57 = _mm_shuffle_epi32(x, 0xFF);
  __m128i a = _mm_add_epi32(_mm_madd_epi16(x02, Load(t.pairs[0])),
                            _mm_madd_epi16(x46, Load(t.pairs[1])));
  a = _mm_add_epi32(a, _mm_set1_epi32(rounding));
  const __m128i b = _mm_add_epi32(_mm_madd_epi16(x13, Load(t.pairs[2])),
                                  _mm_madd_epi16(x57, Load(t.pairs[3])));
  const __m128i sum = _mm_srai_epi32(_mm_add_epi32(a, b), 11);
  const __m128i diff = _mm_srai_epi32(_mm_sub_epi32(a, b), 11);
  // Lanes 0..3 of the difference are outputs 7..4.
  return _mm_packs_epi32(sum, _mm_shuffle_epi32(diff, _MM_SHUFFLE(0, 1, 2, 3)));
}

// The column pass; with kUpperZero rows 4..7 are zero and every +s, -s and
// mulhi with a zero operand is dropped, which leaves each value exactly as
// it was.
template <bool kUpperZero>
void ColumnPass(__m128i (&r)[8]) {
  const __m128i tan1 = _mm_set1_epi16(transform::kTan1);
  const __m128i tan2 = _mm_set1_epi16(transform::kTan2);
  const __m128i tan3 = _mm_set1_epi16(transform::kTan3);
  const __m128i cos4 = _mm_set1_epi16(transform::kCos4);
  __m128i s04 = r[0], d04 = r[0], t = _mm_mulhi_epi16(tan2, r[2]), u = r[2];
  __m128i p = _mm_mulhi_epi16(tan1, r[1]), q = r[1], m = r[3];
  __m128i n = _mm_adds_epi16(_mm_mulhi_epi16(tan3, r[3]), r[3]);
  if constexpr (!kUpperZero) {
    s04 = _mm_adds_epi16(r[0], r[4]);
    d04 = _mm_subs_epi16(r[0], r[4]);
    t = _mm_subs_epi16(t, r[6]);
    u = _mm_adds_epi16(_mm_mulhi_epi16(tan2, r[6]), r[2]);
    p = _mm_subs_epi16(p, r[7]);
    q = _mm_adds_epi16(_mm_mulhi_epi16(tan1, r[7]), r[1]);
    m = _mm_adds_epi16(_mm_adds_epi16(_mm_mulhi_epi16(tan3, r[5]), r[5]), r[3]);
    n = _mm_subs_epi16(n, r[5]);
  }
  const __m128i e1 = _mm_adds_epi16(d04, t);
  const __m128i e2 = _mm_subs_epi16(d04, t);
  const __m128i e0 = _mm_adds_epi16(s04, u);
  const __m128i e3 = _mm_subs_epi16(s04, u);
  const __m128i f = _mm_subs_epi16(p, n);
  const __m128i g = _mm_adds_epi16(p, n);
  const __m128i h = _mm_adds_epi16(q, m);
  const __m128i k = _mm_subs_epi16(q, m);
  __m128i oddA = _mm_mulhi_epi16(_mm_subs_epi16(k, g), cos4);
  oddA = _mm_adds_epi16(oddA, oddA);
  __m128i oddB = _mm_mulhi_epi16(_mm_adds_epi16(k, g), cos4);
  oddB = _mm_adds_epi16(oddB, oddB);
  r[0] = _mm_srai_epi16(_mm_adds_epi16(e0, h), 6);
  r[1] = _mm_srai_epi16(_mm_adds_epi16(e1, oddB), 6);
  r[2] = _mm_srai_epi16(_mm_adds_epi16(e2, oddA), 6);
  r[3] = _mm_srai_epi16(_mm_adds_epi16(e3, f), 6);
  r[4] = _mm_srai_epi16(_mm_subs_epi16(e3, f), 6);
  r[5] = _mm_srai_epi16(_mm_subs_epi16(e2, oddA), 6);
  r[6] = _mm_srai_epi16(_mm_subs_epi16(e1, oddB), 6);
  r[7] = _mm_srai_epi16(_mm_subs_epi16(e0, h), 6);
}

__m128i Dequantise(const int16_t* block, const uint16_t* multipliers, int i) {
  return _mm_srai_epi16(_mm_mullo_epi16(Load(block + i * 8), Load(multipliers + i * 8)), 4);
}

void InverseTransformBlockSse2(int16_t* block, const uint16_t* multipliers) {
  if (block[1] == kNoAcMark) {
    const int16_t s = static_cast<int16_t>(static_cast<int16_t>(block[0] + kDcOnlyBias) >> 3);
    const __m128i v = _mm_set1_epi16(s);
    for (int i = 0; i < 8; ++i) Store(block + i * 8, v);
    return;
  }
  __m128i r[8];
  for (int i = 0; i < 4; ++i) r[i] = Dequantise(block, multipliers, i);
  r[0] = _mm_add_epi16(r[0], _mm_setr_epi16(1024, 0, 0, 0, 0, 0, 0, 0));
  for (int i = 0; i < 4; ++i) r[i] = RowPass(r[i], kRowTables[transform::kRowSet[i]], kRowRounding[i]);
  // Levels are mostly in the upper rows. A zero row 4..7 leaves its row pass
  // at its rounding >> 11, which is 0 for each of them.
  const __m128i upper = _mm_or_si128(_mm_or_si128(Load(block + 32), Load(block + 40)),
                                     _mm_or_si128(Load(block + 48), Load(block + 56)));
  if (_mm_movemask_epi8(_mm_cmpeq_epi8(upper, _mm_setzero_si128())) == 0xFFFF) {
    ColumnPass<true>(r);
  } else {
    for (int i = 4; i < 8; ++i) {
      r[i] = RowPass(Dequantise(block, multipliers, i), kRowTables[transform::kRowSet[i]], kRowRounding[i]);
    }
    ColumnPass<false>(r);
  }
  for (int i = 0; i < 8; ++i) Store(block + i * 8, r[i]);
}

void InverseTransformPairSse2(int16_t* a, int16_t* b, const uint16_t* multipliers) {
  InverseTransformBlockSse2(a, multipliers);
  InverseTransformBlockSse2(b, multipliers);
}

const BlockKernels kBlockKernelsSse2 = {ClearBlocksSse2, InverseTransformBlockSse2, InverseTransformPairSse2};

}  // namespace

const BlockKernels* BlockKernelsSse2() { return &kBlockKernelsSse2; }

}  // namespace vantaro::decoder

#else

namespace vantaro::decoder {
const BlockKernels* BlockKernelsSse2() { return nullptr; }
}  // namespace vantaro::decoder

#endif
