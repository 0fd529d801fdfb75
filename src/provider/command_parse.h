// command_parse.h: splits the parameter text of Initialize into commands and
// their values, in the manner of a command line.
//
// A token beginning with "-" or "/" names a command (up to "=" or a blank);
// other tokens are values of the command before them, or free values when
// no command came yet. Only the blank separates tokens. A value in double
// quotes may hold blanks; a quote closes only when a blank or the end of
// the text follows it. The parser knows no command names; the provider asks
// for the ones it understands. It lives on the stack for one Initialize call
// and owns the commands it made.

#ifndef CORVANE_PROVIDER_COMMAND_PARSE_H_
#define CORVANE_PROVIDER_COMMAND_PARSE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

// One command of the text: a lower-case name and its values in order.
class CCommand {
 public:
  explicit CCommand(std::u16string_view name);
  virtual ~CCommand();

  CCommand(const CCommand&) = delete;
  CCommand& operator=(const CCommand&) = delete;

  const std::u16string& GetName() const { return m_strName; }
  size_t GetValueCount() const { return m_vecValues.size(); }

  // The value at nIndex; null when nIndex is at or beyond the end.
  const std::u16string* GetCommandValue(size_t nIndex) const;

  // Appends a value; null or empty text is dropped, so no value is empty.
  void AddCommandValue(std::u16string_view value);
  void AddCommandValue(const char16_t* value);

 private:
  std::u16string m_strName;
  std::vector<std::u16string> m_vecValues;
};

class CCommandParse {
 public:
  CCommandParse();
  virtual ~CCommandParse();

  CCommandParse(const CCommandParse&) = delete;
  CCommandParse& operator=(const CCommandParse&) = delete;

  // 1 when the text held at least one character, else 0 (null or empty).
  // A second call adds to what the first one found; each text stands on its
  // own, so values in front of its first command are free values.
  virtual int32_t Parse(const char16_t* text);

  // The first command whose name equals strName, ASCII case ignored; null if
  // there is none.
  CCommand* FindCommand(std::u16string_view strName) const;

  const std::vector<std::unique_ptr<CCommand>>& GetCommands() const { return m_vecCommands; }
  // Values that stood before the first command.
  const std::vector<std::u16string>& GetFreeValues() const { return m_vecFreeValues; }

 private:
  // Gives a value to pCurrent, or to the free values while there is no
  // command yet.
  void AddValue(CCommand* pCurrent, std::u16string_view value);

  std::vector<std::unique_ptr<CCommand>> m_vecCommands;
  std::vector<std::u16string> m_vecFreeValues;
};

}  // namespace corvane

#endif  // CORVANE_PROVIDER_COMMAND_PARSE_H_
