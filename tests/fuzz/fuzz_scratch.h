// fuzz_scratch.h: a folder of the fuzzing process's own in /tmp, where a
// target writes its input as the file a reader opens.

#ifndef CORVANE_TESTS_FUZZ_FUZZ_SCRATCH_H_
#define CORVANE_TESTS_FUZZ_FUZZ_SCRATCH_H_

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

// "/tmp/corvane-fuzz-<name>-<pid>", made on first use; a target names one
// folder, the first name given stands for the process.
inline const std::string& ScratchFolder(const char* name) {
  static const std::string folder = [name] {
    std::string path = "/tmp/corvane-fuzz-" + std::string(name) + "-" + std::to_string(getpid());
    std::filesystem::create_directories(path);
    return path;
  }();
  return folder;
}

// Writes the bytes as the whole file.
inline void WriteInput(const std::string& path, const uint8_t* data, size_t size) {
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

#endif  // CORVANE_TESTS_FUZZ_FUZZ_SCRATCH_H_
