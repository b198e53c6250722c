#include "input/includes.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace sorvel {
namespace {

// A scratch directory of include files, removed afterwards.
struct IncludeDir {
  IncludeDir() {
    char name[] = "/tmp/sorvel_inc_XXXXXX";
    dir = mkdtemp(name);
  }
  ~IncludeDir() {
    for (const std::string& f : files) std::remove(f.c_str());
    rmdir(dir.c_str());
  }
  std::string file(const std::string& name, const std::string& text) {
    files.push_back(dir + "/" + name);
    FILE* f = std::fopen(files.back().c_str(), "w");
    std::fputs(text.c_str(), f);
    std::fclose(f);
    return files.back();
  }
  std::string dir;
  std::vector<std::string> files;
};

struct Pass {
  int result;
  std::string out, messages;
  int counter;
};

Pass include_pass(std::string text) {
  Run run;
  char *msg = nullptr, *out = nullptr;
  size_t msg_len = 0, out_len = 0;
  run.screen = open_memstream(&msg, &msg_len);
  FILE* tmp = open_memstream(&out, &out_len);
  FILE* source = fmemopen(text.data(), text.size(), "r");
  Pass p{};
  p.result = parse_includes(run, source, tmp, p.counter);
  std::fclose(source);
  std::fclose(tmp);
  std::fclose(run.screen);
  p.out.assign(out, out_len);
  p.messages.assign(msg, msg_len);
  std::free(out);
  std::free(msg);
  return p;
}

std::string opening(const std::string& name) { return "\n\tOpening include file \"" + name + "\"..."; }
std::string bad_name(const std::string& name) { return "\nBad include file name: \"" + name + "\"\n\n"; }
std::string inc(const std::string& name) { return "#include |" + name + "|"; }

TEST(Include, SplicingAndWhatIsNotADirective) {
  IncludeDir d;
  std::string f = d.file("F", "<F>");
  // "#if", "#x", "#i" pass; white space (line ends too) may precede the "|";
  // the text after the closing "|" stays.
  Pass p = include_pass("#if(1) #x #iy\na#include \n |" + f + "|b\nc#");
  EXPECT_EQ(p.result, 0);
  EXPECT_EQ(p.out, "#if(1) #x #iy\na<F>b\nc#");
  EXPECT_EQ(p.messages, opening(f));
  EXPECT_EQ(p.counter, 2);
  // "#in" not followed by "clude": what was read from the "#" on is dropped.
  EXPECT_EQ(include_pass("a#inx b #inclx c #includ").out, "a b  c ");
}

TEST(Include, DirectivesInCommentsAndDirectOutputAreText) {
  IncludeDir d;
  std::string f = d.file("F", "<F>");
  std::string i = inc(f);
  Pass p = include_pass("; " + i + "\n> " + i + "\n/* " + i + " */" + i + "\nx/;" + i);
  EXPECT_EQ(p.out, "; " + i + "\n> " + i + "\n/* " + i + " */<F>\nx/;<F>");
  // An include ending inside a comment or a ";" line leaves neither open.
  std::string open = d.file("O", "/* open"), line = d.file("L", "; note");
  EXPECT_EQ(include_pass(inc(open) + i + "\n" + inc(line) + i).out, "/* open<F>\n; note<F>");
}

TEST(Include, NameFaults) {
  Pass no_bar = include_pass("#include F|\n");
  EXPECT_EQ(no_bar.result, 1);
  EXPECT_EQ(no_bar.messages, "\n\nInclude filename must be preceeded by a |.\n");

  for (const char* name : {"/nonexistent/zz", "/dev/zero"}) {
    Pass p = include_pass(inc(name));
    EXPECT_EQ(p.result, 999);
    EXPECT_EQ(p.messages, bad_name(name));
  }

  // 255 characters pass; a newline is left out of the name but counted.
  std::string n254(254, 'n'), n255(255, 'n');
  EXPECT_EQ(include_pass(inc(n255)).messages, bad_name(n255));
  EXPECT_EQ(include_pass(inc(n254 + "\n")).messages, bad_name(n254));
  for (const std::string& over : {std::string(256, 'n'), n255 + "\n"}) {
    Pass p = include_pass(inc(over));
    EXPECT_EQ(p.result, 999);
    EXPECT_EQ(p.messages, "\nERROR: Include filename has exceeded maximum\nlength of 255 characters.\n\n");
  }

  IncludeDir d;
  std::string f = d.file("F", "<F>");
  EXPECT_EQ(include_pass("a#include |" + d.dir + "/\nF|b").out, "a<F>b");
  EXPECT_EQ(include_pass("a#include |" + f).out, "a<F>");  // no closing "|"
  EXPECT_EQ(include_pass("a" + inc(d.dir) + "b").out, "ab");  // a directory reads as empty
}

TEST(Include, EveryFileOpenedCountsTowardsTwelve) {
  IncludeDir d;
  std::string c = d.file("C", "c");
  std::string b = d.file("B", "b" + inc(c));
  std::string a = d.file("A", "a" + inc(b));
  Pass nested = include_pass(inc(a));
  EXPECT_EQ(nested.out, "abc");
  EXPECT_EQ(nested.counter, 4);
  EXPECT_EQ(nested.messages, opening(a) + opening(b) + opening(c));
  EXPECT_EQ(include_pass(inc(c) + inc(c) + inc(c)).counter, 4);

  std::string eleven;
  for (int k = 0; k < 11; ++k) eleven += inc(c);
  Pass ok = include_pass(eleven);
  EXPECT_EQ(ok.result, 0);
  EXPECT_EQ(ok.counter, 12);
  Pass over = include_pass(eleven + inc(c));
  EXPECT_EQ(over.result, 1);
  EXPECT_EQ(over.out, std::string(11, 'c'));
  std::string expected;
  for (int k = 0; k < 12; ++k) expected += opening(c);
  EXPECT_EQ(over.messages, expected + "\n\nToo many embedded include files! (Max = 12)\n");

  std::string s = d.dir + "/S";
  d.file("S", "x" + inc(s));
  Pass self = include_pass(inc(s));
  EXPECT_EQ(self.result, 1);
  EXPECT_EQ(self.out, std::string(11, 'x'));
}

}  // namespace
}  // namespace sorvel
