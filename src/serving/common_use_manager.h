// common_use_manager.h: CCommonUseURLsManager, manager 1 of the provider:
// the sites this user really uses, and what they took up lately.
//
// GetRecomURLs merges white-listed domains (with their sub-sites),
// sub-domains and single URLs into one list; one main domain gives at most
// one top-level record, across stages and across calls, through the shown
// set of the database object (emptied by a focus request). GetRecentHistory
// lists the recent tables with a set local to the call. The hide operations
// mark rows of the recommendation tables for good or until the next
// rebuild. The manager keeps nothing between calls but its link to the
// provider, which keeps the provider alive.

#ifndef CORVANE_SERVING_COMMON_USE_MANAGER_H_
#define CORVANE_SERVING_COMMON_USE_MANAGER_H_

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "corvane/CorvaneDataProvider.h"
#include "platform/com_object.h"
#include "serving/provider_link.h"
#include "serving/url_array.h"
#include "serving/url_info2.h"
#include "store/corvane_db.h"

namespace corvane {

class CCommonUseURLsManager final : public ComObject<IURLsManager, ICommonUseURLsManager> {
 public:
  CCommonUseURLsManager() = default;

  static HRESULT CreateInstance(const IID& riid, void** ppvObject);

  // Links the manager to its provider and reads "ExtractBrowser" once.
  [[nodiscard]] HRESULT Attach(IUnknown* provider) { return m_link.Attach(provider, true); }

  // IURLsManager: GetURLs is not offered here (E_NOTIMPL); AddURL and
  // ClearURLs do nothing (S_OK); RemoveURL hides a recommended URL: the low
  // half of uType says whether bstrID is a rowid (0) or a URL (1), the high
  // half whether the hide is for good (0) or until the next rebuild.
  HRESULT GetURLs(uint32_t uCount, IUnknown** lppURLs) override;
  HRESULT AddURL(BSTR bstrURL, BSTR bstrName, uint32_t uReserved) override;
  HRESULT RemoveURL(BSTR bstrID, uint32_t uType) override;
  HRESULT ClearURLs() override;

  // ICommonUseURLsManager (recom_listing.cc, recent_listing.cc). uStart
  // has no effect in either listing; only bit 0 of uType counts in
  // GetRecomURLs (the focus flag).
  HRESULT GetRecomURLs(uint32_t uStart, uint32_t uCount, IUnknown** lppUnkArray, uint32_t uType) override;
  HRESULT HideRecommendDomain(BSTR bstrID, uint32_t uFlag) override;
  HRESULT HideSubDomain(BSTR bstrID, uint32_t uType) override;
  HRESULT GetRecentHistory(uint32_t uStart, uint32_t uCount, IUnknown** lppArray, uint32_t uType) override;

 private:
  ~CCommonUseURLsManager() override = default;

  // State of one GetRecomURLs call.
  struct Listing {
    CCorvaneDB* db;
    bool bFocus;
    uint32_t uCount;
    uint32_t count;
    CURLArray* result;
  };

  void RunDomainStage(Listing* listing);
  // Gives a domain record the sub-sites of its main domain; may hand back
  // another record that now leads (a promotion).
  // The sub-site rows of one main domain, best first, at most the number a
  // record shows.
  struct SubSiteRow {
    std::u16string Domain;
    std::u16string MainDomain;
    uint64_t LastVisitTime;
    uint32_t Score;
    int32_t Hide;
    std::u16string SubName;
  };
  using SubSiteMap = std::unordered_map<std::u16string, std::vector<SubSiteRow>>;
  static SubSiteMap ReadSubSites(CCorvaneDB* db);
  ComPtr<CURLInfo2> AttachSubSites(const SubSiteMap& subSites, const DomainRow& row, ComPtr<CURLInfo2> record);
  void RunSubDomainStage(Listing* listing);
  [[nodiscard]] HRESULT RunURLStage(Listing* listing, bool bPending);
  // Adds the record at the top level and marks its main domain as shown.
  void AddShown(Listing* listing, CURLInfo2* record, const std::u16string& mainDomain);

  CProviderLink m_link;
};

// "www." + domain when the domain is its own main domain, else the domain.
std::u16string SiteURL(const std::u16string& domain);

// Time number to its visit stamp text.
std::u16string StampOf(uint64_t timeNumber);

}  // namespace corvane

#endif  // CORVANE_SERVING_COMMON_USE_MANAGER_H_
