// What the end-to-end harnesses share: reading files and streams whole, and
// running the sorvel binary in a directory with its streams captured.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace sorvel::testing {

inline std::optional<std::string> read_file(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

inline std::string read_stream(FILE* f) {
  std::string out;
  std::rewind(f);
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) out.append(buf, n);
  return out;
}

// The lines of a text without their newlines (a last line need not end in one).
inline std::vector<std::string> split_lines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t nl = text.find('\n', start);
    if (nl == std::string::npos) nl = text.size();
    lines.push_back(text.substr(start, nl - start));
    start = nl + 1;
  }
  return lines;
}

inline std::vector<std::string> split_words(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> words;
  std::string w;
  while (in >> w) words.push_back(w);
  return words;
}

// Runs `program` (as "sorvel" with `args`) in `dir`, standard input empty and
// the two output streams captured. Returns the wait status, or -1 when it
// could not be started.
inline int run_in(const std::filesystem::path& program, const std::vector<std::string>& args,
                  const std::filesystem::path& dir, std::string& out, std::string& err) {
  FILE* fout = std::tmpfile();
  FILE* ferr = std::tmpfile();
  if (!fout || !ferr) return -1;
  std::fflush(stdout);
  pid_t pid = fork();
  if (pid < 0) return -1;
  if (pid == 0) {
    int null_in = open("/dev/null", O_RDONLY);
    if (chdir(dir.c_str()) != 0 || null_in < 0) _exit(126);
    dup2(null_in, 0);
    dup2(fileno(fout), 1);
    dup2(fileno(ferr), 2);
    std::vector<std::string> copy = args;
    std::string name = "sorvel";
    std::vector<char*> argv{name.data()};
    for (std::string& a : copy) argv.push_back(a.data());
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  out = read_stream(fout);
  err = read_stream(ferr);
  std::fclose(fout);
  std::fclose(ferr);
  return status;
}

}  // namespace sorvel::testing
