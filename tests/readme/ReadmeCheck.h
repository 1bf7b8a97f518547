// What the README's generated snippets call to check the answers their
// comments show. Only standard headers here: the snippets must compile with
// the includes the README shows and nothing more.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>

namespace kavrin {
class Variant;
}

namespace readme {

extern const int kChecks;  // the checks in the README
void RunSnippets();        // every C++ block of the README, in order

// Records check `id` (README line `line`, stated as `what`): the answer seen
// against the answer shown.
void Check(int id, int line, const std::u16string& seen, std::u16string_view shown,
           const char* what);
void Check(int id, int line, const kavrin::Variant& seen, std::u16string_view shown,
           const char* what);
void CheckNumber(int id, int line, double seen, double shown, const char* what);

// Numbers, Booleans included, compare by value whatever their types.
template <class Seen, class Shown>
requires std::is_arithmetic_v<Seen> && std::is_arithmetic_v<Shown>
void Check(int id, int line, Seen seen, Shown shown, const char* what) {
  CheckNumber(id, line, static_cast<double>(seen), static_cast<double>(shown), what);
}

}  // namespace readme
