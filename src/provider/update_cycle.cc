// The once-a-day update cycle of the provider.

#include "analysis/update_driver.h"
#include "common/local_clock.h"
#include "common/text_util.h"
#include "common/time_stamp.h"
#include "provider/provider_object.h"
#include "reflists/white_list_loader.h"

namespace corvane {
namespace {

constexpr char16_t kLastUpdate[] = u"LastUpdate";
constexpr char16_t kLastUpdateBK[] = u"LastUpdateBK";
// The date part of a visit stamp: "2014.03.05".
constexpr size_t kStampDateChars = 10;


}  // namespace

HRESULT CCorvaneDataProviderObject::LoadWhiteList() { return LoadWhiteListFile(&m_db); }

HRESULT CCorvaneDataProviderObject::RunUpdateCycle(bool bForce) {
  std::u16string begin = StampOfNow();
  std::u16string lastUpdate;
  static_cast<void>(m_db.GetConfig(kLastUpdate, &lastUpdate, u""));
  // The gate: any difference of the date, forward or backward, opens it.
  if (!bForce && AsciiCompareIgnoreCaseN(begin, lastUpdate, kStampDateChars) == 0) return S_OK;
  static_cast<void>(LoadWhiteList());
  m_db.SizeCacheFor(false);
  // The run goes ahead without the transaction should it not begin; only a
  // pair that began is ended, so a failed begin leaves the nesting count.
  const CStorageWatch watch;
  bool began = m_db.BeginTransaction();
  HRESULT hr = E_FAIL;
  {
    // The driver unloads the extraction library when it goes, before the
    // transaction ends.
    CUpdateDriver driver(&m_db, &m_settings);
    hr = driver.Run();
  }
  // What a run wrote into a file that turned out damaged is rolled back;
  // the next start rebuilds the file.
  if (watch.Damaged()) {
    if (began) static_cast<void>(m_db.AbandonTransaction());
    static_cast<void>(m_db.StorageFailed(watch));
    return E_FAIL;
  }
  if (began) static_cast<void>(m_db.EndTransaction());
  std::u16string end = StampOfNow();
  if (FAILED(hr)) return E_FAIL;
  if (FAILED(m_db.SetConfig(kLastUpdate, end))) return E_FAIL;
  if (!lastUpdate.empty()) static_cast<void>(m_db.SetConfig(kLastUpdateBK, lastUpdate));
  return S_OK;
}

}  // namespace corvane
