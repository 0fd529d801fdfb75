#include "provider/command_parse.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/utf.h"

namespace corvane {
namespace {

// What a parse found, as text: each command as "-name[value][value]", then
// "free" and the free values in the same form.
std::string Found(const CCommandParse& parse) {
  std::string text;
  for (const auto& command : parse.GetCommands()) {
    text += (text.empty() ? "-" : " -") + ToUtf8(command->GetName());
    for (size_t i = 0; i < command->GetValueCount(); ++i) text += "[" + ToUtf8(*command->GetCommandValue(i)) + "]";
  }
  if (!parse.GetFreeValues().empty()) text += " free";
  for (const std::u16string& value : parse.GetFreeValues()) text += "[" + ToUtf8(value) + "]";
  return text;
}

TEST(CommandParseTest, Grammar) {
  const std::u16string kLong(100000, u'v');  // a token is limited only by the text
  const std::pair<std::u16string, std::string> cases[] = {
      {u"-Settings=abc", "-settings[abc]"},
      {u"/settings abc", "-settings[abc]"},
      {u"-a=1 2 3", "-a[1][2][3]"},
      {u"-a=\"x y\" -b", "-a[x y] -b"},
      {u"one two -a", "-a free[one][two]"},
      {u"-a = b", "-a[=][b]"},
      {u"-a=", "-a"},
      {u"-a=\"\"", "-a"},
      {u"-a=\"x\"y\" z", "-a[x\"y][z]"},
      {u"-a=\"x y", "-a[x y]"},
      {u"-a=-b", "-a -b"},
      {u"-a=\"-b\"", "-a[-b]"},
      {u"--a", "--a"},
      {u"-", "-"},
      {u"-a 1 -a 2", "-a[1] -a[2]"},
      // Only the blank separates: tabs and line breaks belong to the token.
      {u"-a\tb=c\nd", "-a\tb[c\nd]"},
      // Runs of blanks are skipped; "-" or "/" inside a value is ordinary.
      {u"   x/y   -K   v-w   ", "-k[v-w] free[x/y]"},
      // A plain value ends at a quote that a blank or the end follows.
      {u"-a ab\" cd\"", "-a[ab][cd]"},
      {u"-a a\"b", "-a[a\"b]"},
      // Empty quoted free values are dropped too; values keep their case.
      {u"\"\" \"Free Value\" -A=\"Mixed Case\"", "-a[Mixed Case] free[Free Value]"},
      {u"-a=\"" + kLong + u"\"", "-a[" + std::string(100000, 'v') + "]"},
  };
  for (const auto& [text, found] : cases) {
    SCOPED_TRACE(ToUtf8(text.substr(0, 40)));
    CCommandParse parse;
    EXPECT_EQ(parse.Parse(text.c_str()), 1);
    EXPECT_EQ(Found(parse), found);
  }
}

}  // namespace
}  // namespace corvane
