// SPDX-License-Identifier: MIT
// Real memory pressure that takes memory from nobody: keeps a small file mapped, gives its pages back to the
// kernel and waits for the disk to bring them in again, over and over until it is ended. The kernel counts
// such waiting as a lack of memory, for the group the program is in and for the whole machine.
//
// usage: memory_staller [FOLDER]      (of a disk, by default /var/tmp; the file is never to be seen there)
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t size = std::size_t{2} << 20U;
constexpr std::size_t pageSize = 4096;
constexpr int readings = 3; // what is read but once would not be missed when it is gone

[[noreturn]] void fail(const char* what) {
  std::perror(what);
  std::exit(1);
}

const volatile char* map(std::string folder) {
  std::string path = std::move(folder) + "/stalled-XXXXXX";
  const int file = ::mkstemp(path.data());
  if (file < 0) fail("mkstemp");
  ::unlink(path.c_str());
  const std::vector<char> content(size, 'x');
  // What is not on the disk yet could not be given back.
  if (::write(file, content.data(), size) != static_cast<ssize_t>(size) || ::fsync(file) != 0) fail("write");
  void* memory = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, file, 0);
  if (memory == MAP_FAILED) fail("mmap");
  ::madvise(memory, size, MADV_RANDOM); // each page is waited for by itself
  return static_cast<const volatile char*>(memory);
}

} // namespace

int main(int argc, char** argv) {
  const volatile char* memory = map(argc > 1 ? argv[1] : "/var/tmp");
  for (;;) {
    for (int reading = 0; reading < readings; ++reading) {
      for (std::size_t at = 0; at < size; at += pageSize) static_cast<void>(memory[at]);
    }
    if (::madvise(const_cast<char*>(memory), size, MADV_PAGEOUT) != 0) fail("madvise");
  }
}
