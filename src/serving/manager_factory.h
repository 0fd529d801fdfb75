// manager_factory.h: builds the manager that a provider hands out under a
// manager ID, already attached to that provider.

#ifndef CORVANE_SERVING_MANAGER_FACTORY_H_
#define CORVANE_SERVING_MANAGER_FACTORY_H_

#include <cstdint>

#include "corvane/CorvaneDataProvider.h"

namespace corvane {

// IDs of the managers: 1 recommendation, 2 focus, 3 history, 4 favourites.
inline constexpr uint32_t kFirstManagerID = 1;
inline constexpr uint32_t kLastManagerID = 4;

// The manager's IURLsManager with one reference, or null when the ID is
// unknown or the manager can't be created or attached.
[[nodiscard]] IURLsManager* CreateURLsManager(uint32_t uManagerID, IUnknown* provider);

}  // namespace corvane

#endif  // CORVANE_SERVING_MANAGER_FACTORY_H_
