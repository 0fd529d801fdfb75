// message.h: the one message the system ever shows a person, as one line on
// standard error (there is no window to put a box in).

#ifndef CORVANE_PLATFORM_MESSAGE_H_
#define CORVANE_PLATFORM_MESSAGE_H_

#include <string_view>

namespace corvane {

void ShowMessage(std::u16string_view text, std::u16string_view caption);

}  // namespace corvane

#endif  // CORVANE_PLATFORM_MESSAGE_H_
