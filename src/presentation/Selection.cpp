// Selecting the whole text of the focused text box, so that typing replaces it.
#include <algorithm>

#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/Host.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"
#include "runtime/Checked.h"

namespace kavrin {

namespace {

// The length of a text box's text as the 16-bit count the selection takes;
// a text beyond 32767 units overflows (6).
int16_t SelectionLength(const Variant& text) {
  const size_t length = ToString(text).size();
  return CheckedInteger(static_cast<int32_t>(std::min<size_t>(length, INT32_MAX)));
}

}  // namespace

void clsPub::TextSelected() {
  const detail::CallReads reads(dbia_);
  const std::shared_ptr<Dispatch> control = CurrentUiHost()->ActiveControl();
  if (!control) throw Error::Runtime(errors::kObjectNotSet);
  if (control->TypeName() != u"TextBox") return;
  const int16_t length = SelectionLength(control->Get(u"Text"));
  control->Put(u"SelStart", Variant(int16_t{0}));
  control->Put(u"SelLength", Variant(length));
}

}  // namespace kavrin
