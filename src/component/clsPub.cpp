// The class frame: DBIA and the lookup record set come into being when first
// needed, init only makes sure DBIA holds an object, and destruction empties
// DBIA before the lookup record set goes.
#include "kavrin/clsPub.h"

namespace kavrin {

clsPub::clsPub() = default;

clsPub::~clsPub() {
  dbia_.reset();
  rs_lookup_.reset();  // released as it stands, never closed
}

std::shared_ptr<KitDatabase> clsPub::DBIA() {
  if (!dbia_) dbia_ = std::make_shared<KitDatabase>();
  return dbia_;
}

void clsPub::DBIA(std::shared_ptr<KitDatabase> value) {
  dbia_ = std::move(value);
}

void clsPub::init(const String& /*DbFullPath*/, const String& /*cPassword*/) {
  // The host's connection is the one assigned to DBIA; the path and password
  // are deliberately not used to open another.
  DBIA();
}

KitDatabase& clsPub::Database() {
  return *DBIA();
}

std::shared_ptr<KitRecordset>& clsPub::Lookup() {
  if (!rs_lookup_) rs_lookup_ = std::make_shared<KitRecordset>();
  return rs_lookup_;
}

}  // namespace kavrin
