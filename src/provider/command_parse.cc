#include "provider/command_parse.h"

#include "common/text_util.h"

namespace corvane {
namespace {

using View = std::u16string_view;

constexpr char16_t kBlank = u' ';
constexpr char16_t kQuote = u'"';

// A double quote ends a value only when a blank or the end of the text
// follows it; elsewhere it is an ordinary character.
bool IsClosingQuote(View text, size_t pos) {
  return text[pos] == kQuote && (pos + 1 == text.size() || text[pos + 1] == kBlank);
}

// Reads a command name behind its "-" or "/" at start. Returns the name;
// *next is behind the "=" or blank that ended it.
View ReadCommandName(View text, size_t start, size_t* next) {
  size_t end = start + 1;
  while (end < text.size() && text[end] != u'=' && text[end] != kBlank) ++end;
  *next = end < text.size() ? end + 1 : end;
  return text.substr(start + 1, end - start - 1);
}

// Reads a value that begins at start, quoted or plain; *next is behind the
// closing quote or the blank that ended it.
View ReadValue(View text, size_t start, size_t* next) {
  const bool quoted = text[start] == kQuote;
  const size_t first = quoted ? start + 1 : start;
  size_t end = first;
  while (end < text.size() && !IsClosingQuote(text, end) && (quoted || text[end] != kBlank)) ++end;
  *next = end < text.size() ? end + 1 : end;
  return text.substr(first, end - first);
}

}  // namespace

CCommand::CCommand(View name) : m_strName(AsciiLowerCopy(name)) {}

CCommand::~CCommand() = default;

const std::u16string* CCommand::GetCommandValue(size_t nIndex) const {
  return nIndex < m_vecValues.size() ? &m_vecValues[nIndex] : nullptr;
}

void CCommand::AddCommandValue(View value) {
  if (!value.empty()) m_vecValues.emplace_back(value);
}

void CCommand::AddCommandValue(const char16_t* value) {
  if (value != nullptr) AddCommandValue(View(value));
}

CCommandParse::CCommandParse() = default;

CCommandParse::~CCommandParse() = default;

int32_t CCommandParse::Parse(const char16_t* text) {
  const View input(text == nullptr ? u"" : text);
  if (input.empty()) return 0;
  CCommand* current = nullptr;
  size_t pos = 0;
  while (pos < input.size()) {
    const char16_t first = input[pos];
    if (first == kBlank) {
      ++pos;
    } else if (first == u'-' || first == u'/') {
      m_vecCommands.push_back(std::make_unique<CCommand>(ReadCommandName(input, pos, &pos)));
      current = m_vecCommands.back().get();
    } else {
      AddValue(current, ReadValue(input, pos, &pos));
    }
  }
  return 1;
}

void CCommandParse::AddValue(CCommand* pCurrent, View value) {
  if (pCurrent != nullptr) {
    pCurrent->AddCommandValue(value);
  } else if (!value.empty()) {
    m_vecFreeValues.emplace_back(value);
  }
}

CCommand* CCommandParse::FindCommand(View strName) const {
  for (const std::unique_ptr<CCommand>& command : m_vecCommands) {
    if (AsciiEqualsIgnoreCase(command->GetName(), strName)) return command.get();
  }
  return nullptr;
}

}  // namespace corvane
