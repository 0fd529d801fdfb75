#include "provider/command_parse.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/utf.h"

namespace corvane {
namespace {

using Values = std::vector<std::u16string>;

struct ParsedCommand {
  std::u16string name;
  Values values;
  bool operator==(const ParsedCommand&) const = default;
};

std::vector<ParsedCommand> Commands(const CCommandParse& parse) {
  std::vector<ParsedCommand> result;
  for (const auto& command : parse.GetCommands()) {
    ParsedCommand parsed{command->GetName(), {}};
    for (size_t i = 0; i < command->GetValueCount(); ++i) parsed.values.push_back(*command->GetCommandValue(i));
    result.push_back(parsed);
  }
  return result;
}

void PrintTo(const ParsedCommand& c, std::ostream* os) {
  *os << "-" << ToUtf8(c.name) << " {";
  for (const auto& v : c.values) *os << "[" << ToUtf8(v) << "]";
  *os << "}";
}

struct ParseCase {
  const char16_t* text;
  std::vector<ParsedCommand> commands;
  Values freeValues;
};

TEST(CommandParseTest, Grammar) {
  const ParseCase cases[] = {
      {u"-Settings=abc", {{u"settings", {u"abc"}}}, {}},
      {u"/settings abc", {{u"settings", {u"abc"}}}, {}},
      {u"-a=1 2 3", {{u"a", {u"1", u"2", u"3"}}}, {}},
      {u"-a=\"x y\" -b", {{u"a", {u"x y"}}, {u"b", {}}}, {}},
      {u"one two -a", {{u"a", {}}}, {u"one", u"two"}},
      {u"-a = b", {{u"a", {u"=", u"b"}}}, {}},
      {u"-a=", {{u"a", {}}}, {}},
      {u"-a=\"\"", {{u"a", {}}}, {}},
      {u"-a=\"x\"y\" z", {{u"a", {u"x\"y", u"z"}}}, {}},
      {u"-a=\"x y", {{u"a", {u"x y"}}}, {}},
      {u"-a=-b", {{u"a", {}}, {u"b", {}}}, {}},
      {u"-a=\"-b\"", {{u"a", {u"-b"}}}, {}},
      {u"--a", {{u"-a", {}}}, {}},
      {u"-", {{u"", {}}}, {}},
      {u"-a 1 -a 2", {{u"a", {u"1"}}, {u"a", {u"2"}}}, {}},
      // Only the blank separates: tabs and line breaks belong to the token.
      {u"-a\tb=c\nd", {{u"a\tb", {u"c\nd"}}}, {}},
      // Runs of blanks are skipped; "-" or "/" inside a value is ordinary.
      {u"   x/y   -K   v-w   ", {{u"k", {u"v-w"}}}, {u"x/y"}},
      // A plain value ends at a quote that a blank or the end follows.
      {u"-a ab\" cd\"", {{u"a", {u"ab", u"cd"}}}, {}},
      {u"-a a\"b", {{u"a", {u"a\"b"}}}, {}},
      // Empty quoted free values are dropped too; values keep their case.
      {u"\"\" \"Free Value\" -A=\"Mixed Case\"", {{u"a", {u"Mixed Case"}}}, {u"Free Value"}},
  };
  for (const ParseCase& c : cases) {
    SCOPED_TRACE(ToUtf8(c.text));
    CCommandParse parse;
    EXPECT_EQ(parse.Parse(c.text), 1);
    EXPECT_EQ(Commands(parse), c.commands);
    EXPECT_EQ(parse.GetFreeValues(), c.freeValues);
  }
}

TEST(CommandParseTest, NullOrEmptyTextFindsNothing) {
  CCommandParse parse;
  EXPECT_EQ(parse.Parse(nullptr), 0);
  EXPECT_EQ(parse.Parse(u""), 0);
  EXPECT_TRUE(parse.GetCommands().empty());
  EXPECT_TRUE(parse.GetFreeValues().empty());
  EXPECT_EQ(parse.FindCommand(u"settings"), nullptr);
}

TEST(CommandParseTest, FindCommandIgnoresCaseAndTakesFirst) {
  CCommandParse parse;
  ASSERT_EQ(parse.Parse(u"-sEtTiNgS=Abc -ForceSettings -settings=second"), 1);
  const CCommand* settings = parse.FindCommand(u"Settings");
  ASSERT_NE(settings, nullptr);
  ASSERT_NE(settings->GetCommandValue(0), nullptr);
  EXPECT_EQ(*settings->GetCommandValue(0), u"Abc");
  EXPECT_EQ(settings->GetCommandValue(1), nullptr);
  const CCommand* force = parse.FindCommand(u"FORCESETTINGS");
  ASSERT_NE(force, nullptr);
  EXPECT_EQ(force->GetValueCount(), 0u);
  EXPECT_EQ(force->GetCommandValue(0), nullptr);
  EXPECT_EQ(parse.FindCommand(u"force"), nullptr);
}

TEST(CommandParseTest, EmptyNameIsFoundByNoRealName) {
  CCommandParse parse;
  ASSERT_EQ(parse.Parse(u"- x"), 1);
  ASSERT_EQ(parse.GetCommands().size(), 1u);
  EXPECT_EQ(parse.FindCommand(u"settings"), nullptr);
  EXPECT_EQ(parse.FindCommand(u"x"), nullptr);
}

TEST(CommandParseTest, SecondParseAddsToFirst) {
  CCommandParse parse;
  ASSERT_EQ(parse.Parse(u"free -a 1"), 1);
  // The second text starts without a command of its own.
  ASSERT_EQ(parse.Parse(u"more -b 2"), 1);
  EXPECT_EQ(parse.Parse(u""), 0);
  const std::vector<ParsedCommand> expected = {{u"a", {u"1"}}, {u"b", {u"2"}}};
  EXPECT_EQ(Commands(parse), expected);
  EXPECT_EQ(parse.GetFreeValues(), (Values{u"free", u"more"}));
}

TEST(CommandParseTest, AddCommandValueDropsNullAndEmpty) {
  CCommand command(u"Name");
  EXPECT_EQ(command.GetName(), u"name");
  command.AddCommandValue(static_cast<const char16_t*>(nullptr));
  command.AddCommandValue(u"");
  command.AddCommandValue(std::u16string_view());
  command.AddCommandValue(u"v");
  ASSERT_EQ(command.GetValueCount(), 1u);
  EXPECT_EQ(*command.GetCommandValue(0), u"v");
}

TEST(CommandParseTest, LongTokenIsLimitedOnlyByText) {
  const std::u16string value(100000, u'v');
  const std::u16string text = u"-a=\"" + value + u"\"";
  CCommandParse parse;
  ASSERT_EQ(parse.Parse(text.c_str()), 1);
  const CCommand* a = parse.FindCommand(u"a");
  ASSERT_NE(a, nullptr);
  ASSERT_NE(a->GetCommandValue(0), nullptr);
  EXPECT_EQ(*a->GetCommandValue(0), value);
}

}  // namespace
}  // namespace corvane
