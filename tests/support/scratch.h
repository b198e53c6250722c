// Scratch directories and whole-file reads and writes for tests that run
// Sorvel on real files.
#pragma once

#include <stdlib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace sorvel::testing {

// A new empty directory under the system's temporary directory.
inline std::string make_dir(const char* what) {
  std::string templ = std::filesystem::temp_directory_path().string() + "/" + what + "-XXXXXX";
  std::vector<char> name(templ.begin(), templ.end());
  name.push_back('\0');
  if (!mkdtemp(name.data())) std::abort();
  return name.data();
}

inline void write_file(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// The file's bytes, or nothing when it cannot be opened.
inline std::optional<std::string> read_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// Everything written to a stream, read back from its start.
inline std::string read_stream(FILE* f) {
  std::string out;
  std::rewind(f);
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) out.append(buf, n);
  return out;
}

}  // namespace sorvel::testing
