#pragma once
// A folder on a disk of a few KiB (a tmpfs mounted over a temporary folder), for the
// tests of what a full disk does to a write. Mounting needs root: where it cannot be done
// the test says so and is skipped.
#include <sys/mount.h>

#include <gtest/gtest.h>

#include <string>

#include "support/program_folder.h"

namespace tessaly::testing {

class SmallDisk {
 public:
  // read_only: refuses every write, even root's.
  explicit SmallDisk(size_t bytes, bool read_only = false) {
    std::string options = "size=" + std::to_string(bytes);
    mounted_ = ::mount("tmpfs", dir_.path().c_str(), "tmpfs", read_only ? MS_RDONLY : 0, options.c_str()) == 0;
  }
  ~SmallDisk() {
    if (mounted_) ::umount2(dir_.path().c_str(), MNT_DETACH);
  }
  bool Mounted() const { return mounted_; }
  const fs::path& path() const { return dir_.path(); }
  fs::path operator/(const std::string& name) const { return dir_.path() / name; }

 private:
  TempDir dir_;
  bool mounted_ = false;
};

// Skips the test when no small disk could be mounted here.
#define TESSALY_REQUIRE_SMALL_DISK(disk)                                                   \
  if (!(disk).Mounted())                                                                   \
  GTEST_SKIP() << "a tmpfs of a few KiB cannot be mounted here (needs root): the full-disk " \
                  "case is not run"

}  // namespace tessaly::testing
