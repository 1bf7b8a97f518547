// The host's user interface, as the component reaches it: the focused control
// of the active form and a modal message box.
//
// The UI is a process-wide service, like the platform's Screen and MsgBox: a
// host application (or a test) installs its own UiHost; the default one has
// no active control and writes message boxes to stderr. Installing is
// thread-safe; the host itself is called on the thread that called clsPub.
#pragma once

#include <cstdint>
#include <memory>

#include "kavrin/Dispatch.h"
#include "kavrin/Export.h"
#include "kavrin/String.h"

namespace kavrin {

// Message box buttons and answers, the platform's numbering.
inline constexpr int32_t vbOKOnly = 0;
inline constexpr int32_t vbOK = 1;

class KAVRIN_API UiHost {
 public:
  virtual ~UiHost();

  // The control that has the focus on the active form, reached by late
  // binding (type name, properties by name). Throws Error 91 when there is
  // no active form or focused control.
  virtual std::shared_ptr<Dispatch> ActiveControl() = 0;

  // Shows `prompt` in a modal message box with `buttons` (vbOKOnly, ...) and
  // `title`, and answers the button the user pressed (vbOK, ...).
  virtual int32_t MsgBox(StringView prompt, int32_t buttons, StringView title) = 0;
};

// The installed host (never null).
KAVRIN_API std::shared_ptr<UiHost> CurrentUiHost();
// Installs `host`, or the default host for nullptr; answers the one replaced.
KAVRIN_API std::shared_ptr<UiHost> SetUiHost(std::shared_ptr<UiHost> host);

// The title a message box of the component shows when it gives none: the
// component's application title.
KAVRIN_API const String& DefaultMessageTitle();

}  // namespace kavrin
