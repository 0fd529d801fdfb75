// corvane: a host of the Corvane data provider. It loads the component as
// any host does, initializes the provider (which runs the daily update when
// it is due) and prints when the last update ended.

#include <cstdio>
#include <string>

#include "corvane/CorvaneDataProvider.h"

namespace {

std::string ToNarrow(BSTR text) {
  std::string out;
  for (uint32_t i = 0; text != nullptr && i < SysStringLen(text); ++i) {
    char16_t c = text[i];
    out.push_back(c < 0x80 ? static_cast<char>(c) : '?');
  }
  return out;
}

}  // namespace

int main() {
  IClassFactory* factory = nullptr;
  if (DllGetClassObject(CLSID_CorvaneDataProviderObject, IID_IClassFactory, reinterpret_cast<void**>(&factory)) < 0) {
    std::fprintf(stderr, "corvane: the component offers no provider\n");
    return 1;
  }
  ICorvaneDataProviderObject* provider = nullptr;
  HRESULT hr = factory->CreateInstance(nullptr, IID_ICorvaneDataProviderObject, reinterpret_cast<void**>(&provider));
  factory->Release();
  if (hr < 0) {
    std::fprintf(stderr, "corvane: cannot create the provider (0x%08X)\n", static_cast<unsigned>(hr));
    return 1;
  }
  hr = provider->Initialize(nullptr);
  if (hr < 0) {
    std::fprintf(stderr, "corvane: Initialize failed (0x%08X)\n", static_cast<unsigned>(hr));
    provider->Release();
    return 1;
  }
  BSTR key = SysAllocString(u"LastUpdate");
  BSTR value = nullptr;
  hr = provider->GetValue(key, &value);
  SysFreeString(key);
  if (hr == S_OK) std::printf("LastUpdate=%s\n", ToNarrow(value).c_str());
  SysFreeString(value);
  provider->Release();
  return hr == S_OK ? 0 : 1;
}
