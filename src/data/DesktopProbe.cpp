// ExistTableQueryDAO: does a desktop database hold a table, or a stored query,
// of a given name?
#include <exception>

#include "kavrin/Dao.h"
#include "kavrin/Error.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

namespace {

// Runs `body` with every failure ignored, and answers the number of the error
// it ended with: 0 when it ran through. A failure that carries no number
// counts as a failure all the same.
template <typename Body>
int32_t LastErrorNumber(Body&& body) {
  try {
    body();
    return 0;
  } catch (const Error& e) {
    return e.number();
  } catch (const std::exception&) {
    return errors::kProviderFailure;
  }
}

}  // namespace

bool clsPub::ExistTableQueryDAO(const std::shared_ptr<dao::Database>& DB, const String& TName,
                                bool IsQuery) {
  const detail::CallReads reads(dbia_);
  const int32_t last_error = LastErrorNumber([&] {
    if (!DB) throw Error::Runtime(errors::kObjectNotSet);
    const auto found = IsQuery ? DB->QueryDefs(TName) : DB->TableDefs(TName);
    if (!found) throw Error::Runtime(errors::kObjectNotSet);
    found->Name();  // read as the lookup reads it; the name itself is not needed
  });
  // Only "item not found" means absent: an empty reference, a closed database
  // or any other failure answers true, as the forms expect.
  return last_error != dao::kItemNotFound;
}

}  // namespace kavrin
