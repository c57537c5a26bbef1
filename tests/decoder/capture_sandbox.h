// A fixture that points the fault capture at a fresh directory of its own,
// so that no test leaves VTQ_Crash_* files in the working directory.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "diagnostics/fault_capture.h"

namespace vantaro::test {

class CaptureSandbox : public testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("vantaro_fault_" + std::to_string(std::random_device{}()) + "_" +
            testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(dir_);
    SetFaultCaptureDirectory(dir_.string());
  }
  void TearDown() override {
    SetFaultCaptureDirectory("");
    std::filesystem::remove_all(dir_);
  }
  std::string ReadFile(const char* name) const {
    std::ifstream in(dir_ / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  std::filesystem::path dir_;
};

}  // namespace vantaro::test
