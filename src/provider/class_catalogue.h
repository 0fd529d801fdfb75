// class_catalogue.h: the classes that a host can create by CLSID, in the
// order of their registration.

#ifndef CORVANE_PROVIDER_CLASS_CATALOGUE_H_
#define CORVANE_PROVIDER_CLASS_CATALOGUE_H_

#include <vector>

#include "provider/class_factory.h"

namespace corvane {

struct ClassEntry {
  CLSID clsid;
  CreateInstanceFn create;
};

const std::vector<ClassEntry>& ClassCatalogue();

}  // namespace corvane

#endif  // CORVANE_PROVIDER_CLASS_CATALOGUE_H_
