// file_notes.h: what the component says about the files of its data folder.
//
// A file that the component refused or found damaged (WhiteList.js,
// Settings.ini, DBConfig.ini) is named, with why and what was done instead,
// under a key of DBConfig.ini that a host reads through GetValue. The value
// is "<stamp>|<sentence>": new on every start that meets the problem, so a
// host that compares it before and after Initialize says it once a run. The
// sentence also goes to the debug log.

#ifndef CORVANE_PLATFORM_FILE_NOTES_H_
#define CORVANE_PLATFORM_FILE_NOTES_H_

#include <initializer_list>
#include <string>
#include <string_view>

namespace corvane {

inline constexpr char16_t kWhiteListNoteKey[] = u"WhiteListRefused";
inline constexpr char16_t kSettingsNoteKey[] = u"SettingsRefused";
inline constexpr char16_t kConfigNoteKey[] = u"DBConfigDamaged";

void NoteFileProblem(std::u16string_view key, const std::string& sentence);

// Whether DBConfig.ini holds something that is no profile of the
// component: text without its [DBConfig] section. A missing or empty file
// is sound, and so is one with garbage lines beside its keys.
bool ConfigFileDamaged(std::u16string_view path);

// Renames a damaged file to "<name>.corrupt", or the first free
// "<name>.corrupt.N" (an earlier damaged file is evidence and is never
// replaced), so that a fresh one is made; each companion that exists
// ("-journal", "-wal") goes along under the same name. The new name, or
// empty when the rename failed.
std::string SetDamagedFileAside(const std::string& path, std::initializer_list<const char*> companions = {});

}  // namespace corvane

#endif  // CORVANE_PLATFORM_FILE_NOTES_H_
