// browser_table.h: the names by which the system records a browser value,
// and the order in which it looks for another browser to read when the
// default one delivers no history.

#ifndef CORVANE_INTAKE_BROWSER_TABLE_H_
#define CORVANE_INTAKE_BROWSER_TABLE_H_

#include <cstdint>
#include <span>

namespace corvane {

// The name of a browser value as DBConfig.ini records it; "Unknown" for 0
// and for any value the table lacks.
const char16_t* BrowserName(uint32_t uBrowser);

// The browsers tried, in this order, when the default browser delivers
// nothing. Maxhon is absent: it is read only as the default browser.
std::span<const uint32_t> FallbackOrder();

}  // namespace corvane

#endif  // CORVANE_INTAKE_BROWSER_TABLE_H_
