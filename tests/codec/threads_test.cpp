// Two instances on two threads give the bytes one instance gives alone: no
// walk, table build or kernel record shares state between instances.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "codec/field_flow.h"
#include "support/pictures.h"

namespace vantaro {
namespace {

// Streams and decoded pictures of four frames, both joined.
std::vector<uint8_t> Work(char variant, uint32_t layout) {
  std::vector<uint8_t> all;
  for (uint32_t seed = 0; seed < 4; ++seed) {
    const test::Frame frame = test::MakeFrame(layout, 64, 70, seed);
    test::TestInstance instance(test::FourCC('V', 'T', 'Q', variant), layout, 64, 70);
    const std::vector<uint8_t> stream = test::CompressFrameBytes(instance.get(), frame);
    test::Frame out = frame;
    (void)DecompressFrame(instance.get(), out.main.data(), out.chroma.empty() ? nullptr : out.chroma.data(),
                          stream.data(), out.stride, stream.size());
    all.insert(all.end(), stream.begin(), stream.end());
    all.insert(all.end(), out.main.begin(), out.main.end());
    all.insert(all.end(), out.chroma.begin(), out.chroma.end());
  }
  return all;
}

TEST(Threads, TwoInstancesOnTwoThreadsGiveTheBytesOfOne) {
  // The threads go first, so that they also race to build the tables (each
  // case runs in a process of its own).
  std::vector<uint8_t> a, b;
  std::thread first([&] { a = Work('3', kCsUYVA); });
  std::thread second([&] { b = Work('4', kCsNV24); });
  first.join();
  second.join();
  EXPECT_EQ(a, Work('3', kCsUYVA));
  EXPECT_EQ(b, Work('4', kCsNV24));
}

}  // namespace
}  // namespace vantaro
