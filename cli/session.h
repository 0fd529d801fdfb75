// session.h: one host's use of the component for the length of a command.
//
// Open checks the data folder, copies the sample white list there when none
// is there, creates the provider through the class object and calls
// Initialize (which runs the daily update when it is due). The listing and
// change operations then go through the four managers, exactly as any host
// of the component would. Every operation returns the component's status;
// Error() holds a one-line description of the last failure.

#ifndef CORVANE_CLI_SESSION_H_
#define CORVANE_CLI_SESSION_H_

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "cli/com_ref.h"
#include "cli/records.h"
#include "corvane/CorvaneDataProvider.h"

namespace corvane::cli {

// Where a record to hide comes from.
enum class HideKind { kSite, kSubSite, kUrl, kHistory, kFavorite };

class ProviderSession {
 public:
  // The data folder's check, creation and Initialize with the parameter
  // text (may be empty). E_FAIL without touching the component when the
  // data folder is not usable.
  [[nodiscard]] HRESULT Open(const std::string& param);
  // True when Initialize ran the daily update: it wrote a new "LastUpdate".
  // Lets a forced update skip a second run on the first start of a day.
  bool Updated() const { return m_updated; }
  [[nodiscard]] HRESULT ForceUpdate();
  // S_OK with the value; E_FAIL when the key has no value.
  [[nodiscard]] HRESULT GetValue(const std::string& key, std::string* lpValue);

  // Focus sites first, then the rest, each at most count top-level records.
  // A sub-site nested in a site record gets the ID of its host's row as
  // "hide site" takes it (the component gives every nested record ID 1),
  // or 0 when the database does not name one.
  [[nodiscard]] HRESULT ListSites(uint32_t count, std::vector<SiteRecord>* lpOut);
  [[nodiscard]] HRESULT ListRecent(uint32_t count, std::vector<SiteRecord>* lpOut);
  // count 0: all rows. An empty search lists, a non-empty one searches.
  [[nodiscard]] HRESULT ListHistory(uint32_t count, const std::string& search, std::vector<DayGroup>* lpOut);
  [[nodiscard]] HRESULT ListFavorites(uint32_t count, std::vector<UrlRecord>* lpOut);
  [[nodiscard]] HRESULT ListPins(std::vector<UrlRecord>* lpOut);

  // S_OK when added, S_FALSE when the pair stood already.
  [[nodiscard]] HRESULT AddPin(const std::string& url, const std::string& name);
  // byId: id is the decimal ID of the entry, else its URL.
  [[nodiscard]] HRESULT RemovePin(const std::string& id, bool byId);
  // id: decimal record ID (or a URL for kUrl when byUrl).
  [[nodiscard]] HRESULT Hide(HideKind kind, const std::string& id, bool byUrl, bool untilRebuild);

  const std::string& Error() const { return m_error; }
  // Whether this session printed the component's note of that key
  // ("SettingsRefused", ...).
  bool Said(const std::string& noteKey) const { return m_saidNotes.count(noteKey) != 0; }

 private:
  HRESULT Fail(HRESULT hr, const std::string& what);
  // Prints, one line each, the component's notes about its files that
  // changed since the last look.
  void SayNewNotes();
  HRESULT Manager(uint32_t id, IUnknown** lppManager);

  ComRef<ICorvaneDataProviderObject> m_provider;
  std::map<std::string, std::string> m_notes;
  std::set<std::string> m_saidNotes;
  std::string m_error;
  bool m_updated = false;
};

}  // namespace corvane::cli

#endif  // CORVANE_CLI_SESSION_H_
