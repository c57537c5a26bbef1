// AVX2 twins of the block kernels: a pair of blocks side by side, one block
// in each 128-bit lane, each lane the SSE2 transform's arithmetic. Every
// shuffle and pack used works within its lane, so the blocks never mix.
#include "decoder/inverse_transform.h"

#if defined(VANTARO_KERNELS_AVX2)
#include <immintrin.h>

#include "decoder/block_decode_tables.h"

namespace vantaro::decoder {
namespace {

__m128i Load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
// Row i of blocks a and b as one vector: a in the low lane.
__m256i LoadRows(const int16_t* a, const int16_t* b, int i) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(Load(a + 8 * i)), Load(b + 8 * i), 1);
}
__m256i Both(const void* p) { return _mm256_broadcastsi128_si256(Load(p)); }

// A block's four stores written out: the plain loop over all of them is
// turned into a library memset call, twice as slow for a macroblock's 1 KiB.
void ClearBlocksAvx2(int16_t* blocks, int32_t count) {
  const __m256i zero = _mm256_setzero_si256();
  for (int32_t i = 0; i < count; ++i) {
    __m256i* block = reinterpret_cast<__m256i*>(blocks + i * 64);
    _mm256_storeu_si256(block, zero);
    _mm256_storeu_si256(block + 1, zero);
    _mm256_storeu_si256(block + 2, zero);
    _mm256_storeu_si256(block + 3, zero);
  }
}

__m256i RowPass(__m256i x, const RowTableSet& t, int32_t rounding) {
  x = _mm256_shufflelo_epi16(x, _MM_SHUFFLE(3, 1, 2, 0));
  x = _mm256_shufflehi_epi16(x, _MM_SHUFFLE(3, 1, 2, 0));
  const __m256i x02 = _mm256_shuffle_epi32(x, 0x00);
  const __m256i x13 = _mm256_shuffle_epi32(x, 0x55);
  const __m256i x46 = _mm256_shuffle_epi32(x, 0xAA);
  const __m256i x57 = _mm256_shuffle_epi32(x, 0xFF);
  __m256i a = _mm256_add_epi32(_mm256_madd_epi16(x02, Both(t.pairs[0])), _mm256_madd_epi16(x46, Both(t.pairs[1])));
  a = _mm256_add_epi32(a, _mm256_set1_epi32(rounding));
  const __m256i b =
      _mm256_add_epi32(_mm256_madd_epi16(x13, Both(t.pairs[2])), _mm256_madd_epi16(x57, Both(t.pairs[3])));
  const __m256i sum = _mm256_srai_epi32(_mm256_add_epi32(a, b), 11);
  const __m256i diff = _mm256_srai_epi32(_mm256_sub_epi32(a, b), 11);
  return _mm256_packs_epi32(sum, _mm256_shuffle_epi32(diff, _MM_SHUFFLE(0, 1, 2, 3)));
}

// The column pass; with kUpperZero rows 4..7 are zero and every step with a
// zero operand is dropped, as in the SSE2 kernel.
template <bool kUpperZero>
void ColumnPass(__m256i (&r)[8]) {
  const __m256i tan1 = _mm256_set1_epi16(transform::kTan1);
  const __m256i tan2 = _mm256_set1_epi16(transform::kTan2);
  const __m256i tan3 = _mm256_set1_epi16(transform::kTan3);
  const __m256i cos4 = _mm256_set1_epi16(transform::kCos4);
  __m256i s04 = r[0], d04 = r[0], t = _mm256_mulhi_epi16(tan2, r[2]), u = r[2];
  __m256i p = _mm256_mulhi_epi16(tan1, r[1]), q = r[1], m = r[3];
  __m256i n = _mm256_adds_epi16(_mm256_mulhi_epi16(tan3, r[3]), r[3]);
  if constexpr (!kUpperZero) {
    s04 = _mm256_adds_epi16(r[0], r[4]);
    d04 = _mm256_subs_epi16(r[0], r[4]);
    t = _mm256_subs_epi16(t, r[6]);
    u = _mm256_adds_epi16(_mm256_mulhi_epi16(tan2, r[6]), r[2]);
    p = _mm256_subs_epi16(p, r[7]);
    q = _mm256_adds_epi16(_mm256_mulhi_epi16(tan1, r[7]), r[1]);
    m = _mm256_adds_epi16(_mm256_adds_epi16(_mm256_mulhi_epi16(tan3, r[5]), r[5]), r[3]);
    n = _mm256_subs_epi16(n, r[5]);
  }
  const __m256i e1 = _mm256_adds_epi16(d04, t);
  const __m256i e2 = _mm256_subs_epi16(d04, t);
  const __m256i e0 = _mm256_adds_epi16(s04, u);
  const __m256i e3 = _mm256_subs_epi16(s04, u);
  const __m256i f = _mm256_subs_epi16(p, n);
  const __m256i g = _mm256_adds_epi16(p, n);
  const __m256i h = _mm256_adds_epi16(q, m);
  const __m256i k = _mm256_subs_epi16(q, m);
  __m256i oddA = _mm256_mulhi_epi16(_mm256_subs_epi16(k, g), cos4);
  oddA = _mm256_adds_epi16(oddA, oddA);
  __m256i oddB = _mm256_mulhi_epi16(_mm256_adds_epi16(k, g), cos4);
  oddB = _mm256_adds_epi16(oddB, oddB);
  r[0] = _mm256_srai_epi16(_mm256_adds_epi16(e0, h), 6);
  r[1] = _mm256_srai_epi16(_mm256_adds_epi16(e1, oddB), 6);
  r[2] = _mm256_srai_epi16(_mm256_adds_epi16(e2, oddA), 6);
  r[3] = _mm256_srai_epi16(_mm256_adds_epi16(e3, f), 6);
  r[4] = _mm256_srai_epi16(_mm256_subs_epi16(e3, f), 6);
  r[5] = _mm256_srai_epi16(_mm256_subs_epi16(e2, oddA), 6);
  r[6] = _mm256_srai_epi16(_mm256_subs_epi16(e1, oddB), 6);
  r[7] = _mm256_srai_epi16(_mm256_subs_epi16(e0, h), 6);
}

__m256i Dequantise(const int16_t* a, const int16_t* b, const uint16_t* multipliers, int i) {
  return _mm256_srai_epi16(_mm256_mullo_epi16(LoadRows(a, b, i), Both(multipliers + 8 * i)), 4);
}

void InverseTransformPairAvx2(int16_t* a, int16_t* b, const uint16_t* multipliers) {
  if (a[1] == kNoAcMark || b[1] == kNoAcMark) {
    // A block without AC takes the shortcut: the single-block kernel each.
    const BlockKernels& single = *BlockKernelsSse2();
    single.inverseTransform(a, multipliers);
    single.inverseTransform(b, multipliers);
    return;
  }
  __m256i r[8];
  for (int i = 0; i < 4; ++i) r[i] = Dequantise(a, b, multipliers, i);
  r[0] = _mm256_add_epi16(r[0], _mm256_setr_epi16(1024, 0, 0, 0, 0, 0, 0, 0, 1024, 0, 0, 0, 0, 0, 0, 0));
  for (int i = 0; i < 4; ++i) r[i] = RowPass(r[i], kRowTables[transform::kRowSet[i]], kRowRounding[i]);
  // Rows 4..7 of both blocks zero: their row passes give 0 (see the SSE2 kernel).
  const __m256i upper = _mm256_or_si256(_mm256_or_si256(LoadRows(a, b, 4), LoadRows(a, b, 5)),
                                        _mm256_or_si256(LoadRows(a, b, 6), LoadRows(a, b, 7)));
  if (_mm256_testz_si256(upper, upper)) {
    ColumnPass<true>(r);
  } else {
    for (int i = 4; i < 8; ++i) {
      r[i] = RowPass(Dequantise(a, b, multipliers, i), kRowTables[transform::kRowSet[i]], kRowRounding[i]);
    }
    ColumnPass<false>(r);
  }
  for (int i = 0; i < 8; ++i) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(a + 8 * i), _mm256_castsi256_si128(r[i]));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(b + 8 * i), _mm256_extracti128_si256(r[i], 1));
  }
}

// A single block is the SSE2 kernel's.
const BlockKernels* Build() {
  static BlockKernels k{};
  k = *BlockKernelsSse2();
  k.clearBlocks = ClearBlocksAvx2;
  k.inverseTransformPair = InverseTransformPairAvx2;
  return &k;
}

}  // namespace

const BlockKernels* BlockKernelsAvx2() {
  static const BlockKernels* const k = Build();
  return k;
}

}  // namespace vantaro::decoder

#else

namespace vantaro::decoder {
const BlockKernels* BlockKernelsAvx2() { return nullptr; }
}  // namespace vantaro::decoder

#endif
