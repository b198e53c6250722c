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
class IncludeDir {
 public:
  IncludeDir() {
    char name[] = "/tmp/sorvel_inc_XXXXXX";
    dir = mkdtemp(name);
  }
  ~IncludeDir() {
    for (const std::string& f : files_) std::remove(f.c_str());
    rmdir(dir.c_str());
  }
  std::string file(const std::string& name, const std::string& text) {
    std::string path = dir + "/" + name;
    FILE* f = std::fopen(path.c_str(), "w");
    std::fputs(text.c_str(), f);
    std::fclose(f);
    files_.push_back(path);
    return path;
  }
  std::string dir;

 private:
  std::vector<std::string> files_;
};

struct Pass {
  int result;
  std::string out;
  std::string messages;
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

std::string opening(const std::string& name) {
  return "\n\tOpening include file \"" + name + "\"...";
}

TEST(Include, TextWithoutDirectivesIsCopied) {
  const char* text = "a #x #iy #if(1)\n#endif\n#";
  Pass p = include_pass(text);
  EXPECT_EQ(p.result, 0);
  EXPECT_EQ(p.out, text);
  EXPECT_EQ(p.counter, 1);
  EXPECT_EQ(p.messages, "");
  EXPECT_EQ(include_pass("ab#i").out, "ab#i");
}

TEST(Include, FileIsSplicedIn) {
  IncludeDir d;
  std::string f = d.file("F", "one\ntwo\n");
  Pass p = include_pass("a\n#include \n |" + f + "|b\nc");
  EXPECT_EQ(p.result, 0);
  EXPECT_EQ(p.out, "a\none\ntwo\nb\nc");
  EXPECT_EQ(p.messages, opening(f));
  EXPECT_EQ(p.counter, 2);
}

TEST(Include, DirectivesInCommentsAndDirectOutputAreText) {
  IncludeDir d;
  std::string f = d.file("F", "<F>");
  std::string dir = "#include |" + f + "|";
  Pass p = include_pass("; " + dir + "\n> " + dir + "\n/* " + dir + " */" + dir + "\nx/;" + dir);
  EXPECT_EQ(p.result, 0);
  EXPECT_EQ(p.out, "; " + dir + "\n> " + dir + "\n/* " + dir + " */<F>\nx/;<F>");
  EXPECT_EQ(p.counter, 3);
}

TEST(Include, MisspeltDirectiveIsDropped) {
  EXPECT_EQ(include_pass("a#inx b\n").out, "a b\n");
  EXPECT_EQ(include_pass("a#inclx b\n").out, "a b\n");
  EXPECT_EQ(include_pass("a#includ").out, "a");
}

TEST(Include, NameFaults) {
  Pass no_bar = include_pass("#include F|\n");
  EXPECT_EQ(no_bar.result, 1);
  EXPECT_EQ(no_bar.messages, "\n\nInclude filename must be preceeded by a |.\n");

  Pass missing = include_pass("#include |/nonexistent/zz|\n");
  EXPECT_EQ(missing.result, 999);
  EXPECT_EQ(missing.messages, "\nBad include file name: \"/nonexistent/zz\"\n\n");
}

TEST(Include, NameLengthLimit) {
  // A newline is left out of the name but counts towards its length.
  std::string name255(255, 'n');
  Pass fits = include_pass("#include |" + name255 + "|");
  EXPECT_EQ(fits.result, 999);
  EXPECT_EQ(fits.messages, "\nBad include file name: \"" + name255 + "\"\n\n");

  std::string with_newline = std::string(254, 'n') + "\n";
  Pass newline = include_pass("#include |" + with_newline + "|");
  EXPECT_EQ(newline.messages, "\nBad include file name: \"" + std::string(254, 'n') + "\"\n\n");

  for (const std::string& over : {std::string(256, 'n'), std::string(255, 'n') + "\n"}) {
    Pass p = include_pass("#include |" + over + "|");
    EXPECT_EQ(p.result, 999);
    EXPECT_EQ(p.messages,
              "\nERROR: Include filename has exceeded maximum\nlength of 255 characters.\n\n");
  }
}

TEST(Include, NameWithANewlineOrWithoutItsClosingBar) {
  IncludeDir d;
  std::string f = d.file("F", "<F>");
  EXPECT_EQ(include_pass("a#include |" + d.dir + "/\nF|b").out, "a<F>b");
  EXPECT_EQ(include_pass("a#include |" + f).out, "a<F>");
}

TEST(Include, EveryFileOpenedCountsTowardsTheLimit) {
  IncludeDir d;
  std::string c = d.file("C", "c");
  std::string b = d.file("B", "b#include |" + c + "|");
  std::string a = d.file("A", "a#include |" + b + "|");
  Pass nested = include_pass("#include |" + a + "|");
  EXPECT_EQ(nested.out, "abc");
  EXPECT_EQ(nested.counter, 4);
  EXPECT_EQ(nested.messages, opening(a) + opening(b) + opening(c));

  Pass side = include_pass("#include |" + c + "|#include |" + c + "|#include |" + c + "|");
  EXPECT_EQ(side.out, "ccc");
  EXPECT_EQ(side.counter, 4);
}

TEST(Include, TwelveFilesInARun) {
  IncludeDir d;
  std::string c = d.file("C", "c");
  std::string eleven;
  for (int k = 0; k < 11; ++k) eleven += "#include |" + c + "|";
  Pass ok = include_pass(eleven);
  EXPECT_EQ(ok.result, 0);
  EXPECT_EQ(ok.out, std::string(11, 'c'));
  EXPECT_EQ(ok.counter, 12);

  Pass over = include_pass(eleven + "#include |" + c + "|");
  EXPECT_EQ(over.result, 1);
  EXPECT_EQ(over.out, std::string(11, 'c'));
  std::string expected;
  for (int k = 0; k < 12; ++k) expected += opening(c);
  EXPECT_EQ(over.messages, expected + "\n\nToo many embedded include files! (Max = 12)\n");
}

TEST(Include, SelfIncludingFileStopsAtTheLimit) {
  IncludeDir d;
  std::string s = d.dir + "/S";
  d.file("S", "x#include |" + s + "|");
  Pass p = include_pass("#include |" + s + "|");
  EXPECT_EQ(p.result, 1);
  EXPECT_EQ(p.out, std::string(11, 'x'));
  EXPECT_EQ(p.counter, 13);
}

TEST(Include, DirectoryReadsAsEmpty) {
  IncludeDir d;
  Pass p = include_pass("a#include |" + d.dir + "|b");
  EXPECT_EQ(p.result, 0);
  EXPECT_EQ(p.out, "ab");
}

TEST(Include, StateIsResetAfterAnInclude) {
  // An include that ends inside a comment or a ";" line leaves neither open.
  IncludeDir d;
  std::string open_comment = d.file("O", "/* open");
  std::string line_comment = d.file("L", "; note");
  std::string g = d.file("G", "<G>");
  Pass p = include_pass("#include |" + open_comment + "|#include |" + g + "|\n#include |" +
                        line_comment + "|#include |" + g + "|");
  EXPECT_EQ(p.result, 0);
  EXPECT_EQ(p.out, "/* open<G>\n; note<G>");
}

}  // namespace
}  // namespace sorvel
