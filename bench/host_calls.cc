#include "host_calls.h"

#include <chrono>
#include <functional>

#include "corvane/CorvaneDataProvider.h"
#include "stats.h"

namespace corvane::bench {
namespace {

template <class I>
I* QueryOrNull(IUnknown* object, const IID& iid) {
  I* result = nullptr;
  if (object == nullptr || object->QueryInterface(iid, reinterpret_cast<void**>(&result)) < 0) return nullptr;
  return result;
}

// Words a person might type into the history search of the start page:
// hosts and words of titles of the fixture's history.
constexpr std::u16string_view kTypedWords[] = {u"youtube", u"github", u"wikipedia", u"news", u"forum", u"weather"};

void ReleaseIf(IUnknown* object) {
  if (object != nullptr) object->Release();
}

// Times fn over the repetitions; setup runs before each call, untimed.
CallTiming Time(const std::string& name, size_t repetitions, const std::function<void()>& setup,
                const std::function<HRESULT()>& fn) {
  CallTiming timing{name, 0, 0, repetitions, true};
  std::vector<double> samples;
  for (size_t i = 0; i < repetitions; ++i) {
    if (setup) setup();
    auto start = std::chrono::steady_clock::now();
    HRESULT hr = fn();
    samples.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    if (hr < 0) timing.ok = false;
  }
  timing.medianMs = Quantile(samples, 0.5);
  timing.p99Ms = Quantile(samples, 0.99);
  return timing;
}

}  // namespace

std::vector<CallTiming> MeasureHostCalls(size_t repetitions) {
  std::vector<CallTiming> timings;
  IClassFactory* factory = nullptr;
  if (DllGetClassObject(CLSID_CorvaneDataProviderObject, IID_IClassFactory, reinterpret_cast<void**>(&factory)) < 0) {
    return timings;
  }
  ICorvaneDataProviderObject* provider = nullptr;
  factory->CreateInstance(nullptr, IID_ICorvaneDataProviderObject, reinterpret_cast<void**>(&provider));
  factory->Release();
  if (provider == nullptr || provider->Initialize(nullptr) < 0) {
    ReleaseIf(provider);
    return timings;
  }
  IUnknown* recommendations = nullptr;
  IUnknown* history = nullptr;
  provider->GetURLsManager(1, &recommendations);
  provider->GetURLsManager(3, &history);
  auto* common = QueryOrNull<ICommonUseURLsManager>(recommendations, IID_ICommonUseURLsManager);
  auto* historyList = QueryOrNull<IURLsManager>(history, IID_IURLsManager);
  auto* historySearch = QueryOrNull<IHistoryURLsManager>(history, IID_IHistoryURLsManager);
  if (common != nullptr) {
    // A listing starts with the focus request, which also empties the set
    // of domains shown; the timed call is the first page of the rest.
    timings.push_back(Time(
        "GetRecomURLs(20)", repetitions,
        [&] {
          IUnknown* focus = nullptr;
          common->GetRecomURLs(0, 20, &focus, 1);
          ReleaseIf(focus);
        },
        [&] {
          IUnknown* page = nullptr;
          HRESULT hr = common->GetRecomURLs(0, 20, &page, 0);
          ReleaseIf(page);
          return hr;
        }));
    timings.push_back(Time("GetRecentHistory(20)", repetitions, nullptr, [&] {
      IUnknown* page = nullptr;
      HRESULT hr = common->GetRecentHistory(0, 20, &page, 0);
      ReleaseIf(page);
      return hr;
    }));
  }
  if (historyList != nullptr) {
    timings.push_back(Time("history GetURLs(200)", repetitions, nullptr, [&] {
      IUnknown* rows = nullptr;
      HRESULT hr = historyList->GetURLs(200, &rows);
      ReleaseIf(rows);
      return hr;
    }));
  }
  if (historySearch != nullptr) {
    std::vector<BSTR> typed;
    for (std::u16string_view word : kTypedWords) {
      for (size_t length = 1; length <= word.size(); ++length) {
        typed.push_back(SysAllocString(std::u16string(word.substr(0, length)).c_str()));
      }
    }
    size_t next = 0;
    timings.push_back(Time("history SearchURLs", std::max<size_t>(repetitions / 10, 5) * typed.size(), nullptr, [&] {
      IUnknown* rows = nullptr;
      HRESULT hr = historySearch->SearchURLs(typed[next++ % typed.size()], &rows);
      ReleaseIf(rows);
      return hr;
    }));
    for (BSTR text : typed) SysFreeString(text);
  }
  ReleaseIf(common);
  ReleaseIf(historyList);
  ReleaseIf(historySearch);
  ReleaseIf(recommendations);
  ReleaseIf(history);
  provider->Release();
  return timings;
}

}  // namespace corvane::bench
