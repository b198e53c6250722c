// The one comment walker under each of its rules: which characters of a text
// lie in a comment (marks included) when the text is walked as each walker
// of the input walks it.
#include "input/comments.h"

#include <gtest/gtest.h>

#include <string>

namespace sorvel {
namespace {

// "c" under each character inside a comment (or a mark), "." elsewhere.
std::string walk(const std::string& text, CommentRules rules) {
  CommentState state;
  std::string out;
  for (size_t i = 0; i < text.size();) {
    const bool was = state.in();
    const int next = i + 1 < text.size() ? text[i + 1] : 0;
    const int mark = state.step(text[i], next, rules);
    const int n = mark ? mark : 1;
    out.append(static_cast<size_t>(n), mark || was || state.in() ? 'c' : '.');
    i += static_cast<size_t>(n);
  }
  return out;
}

// The include pass sees each character with the one before it.
std::string walk_back(const std::string& text) {
  CommentState state;
  std::string out;
  int prev = ' ';
  for (char c : text) {
    state.step(prev, c, CommentRules::kIncludePass);
    out += state.in() ? 'c' : '.';
    prev = c;
  }
  return out;
}

TEST(CommentRules, WhereEachWalkerSeesComments) {
  // Marks anywhere: "*/" ends a ";" comment, and "/*" after ";" opens one.
  EXPECT_EQ(walk("a ; b */ c", CommentRules::kMarksAnywhere), "..cccccc..");
  EXPECT_EQ(walk("a /* /* b */ c", CommentRules::kMarksAnywhere), "..cccccccccc..");
  EXPECT_EQ(walk("; a\nb", CommentRules::kMarksAnywhere), "cccc.");
  // Outside comments only: "*/" after ";" and ";" in a block change nothing.
  EXPECT_EQ(walk("a ; b */ c", CommentRules::kOutsideComments), "..cccccccc");
  EXPECT_EQ(walk("/* ; */ b", CommentRules::kOutsideComments), "ccccccc..");
  EXPECT_EQ(walk("; a\nb", CommentRules::kOutsideComments), "ccccc");
  // Nested: two "*/" close two "/*"; ";" is no mark.
  EXPECT_EQ(walk("/* /* */ a */ b", CommentRules::kNested), "ccccccccccccc..");
  EXPECT_EQ(walk("; a", CommentRules::kNested), "...");
  // The include pass: "/*/" opens and closes; ">" and ";" hold to the newline,
  // but not after "/".
  EXPECT_EQ(walk_back("/*/ a"), ".c...");
  EXPECT_EQ(walk_back("> a\nb ;x"), "ccc...cc");
  EXPECT_EQ(walk_back("/; a"), "....");
}

}  // namespace
}  // namespace sorvel
