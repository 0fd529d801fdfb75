#include "provider/class_catalogue.h"

#include "provider/provider_object.h"

namespace corvane {

const std::vector<ClassEntry>& ClassCatalogue() {
  static const std::vector<ClassEntry> classes = {
      {CLSID_CorvaneDataProviderObject, &CCorvaneDataProviderObject::CreateInstance},
  };
  return classes;
}

}  // namespace corvane
