// The criteria a kit record set's FindFirst reads, on any text: reading them
// fails only with 3077, and finding with them on a real table only with the
// kit's criteria errors (3077, 3070, 3464). A value taken from a row, quoted
// with its quotes doubled, always finds a row holding it.
#include "platform/Criteria.h"
#include "FuzzSupport.h"

using namespace kavrin;

namespace {

using errors::kCriteriaSyntax, errors::kCriteriaTypeMismatch, errors::kUnknownColumn;

// Whether a search with `criteria` ran (it fails only with the criteria errors).
bool Searched(KitRecordset& rs, const String& criteria) {
  return fuzz::Try([&] { return rs.FindFirst(criteria), true; },
                   {kCriteriaSyntax, kUnknownColumn, kCriteriaTypeMismatch})
      .has_value();
}

// A text literal of the criteria language: quotes inside are doubled.
String Quoted(const String& text) {
  String out = u"'";
  for (char16_t c : text)
    out += c == u'\'' ? u"''" : String(1, c);
  return out + u"'";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // The tables searched, each loaded once; a search only moves in them.
  static const auto tables = [] {
    const auto db = fuzz::Fixture::Get().Open();
    std::vector<std::shared_ptr<KitRecordset>> loaded;
    for (const char16_t* name : {u"Inventory", u"Rd_Style", u"Warehouse", u"AccInformation"})
      loaded.push_back(db->OpenQuery(name));
    return loaded;
  }();
  fuzz::ByteReader bytes(data, size);
  const auto rs = tables[bytes.Byte() % tables.size()];
  const uint8_t row_choice = bytes.Byte(), column_choice = bytes.Byte();
  const String criteria = bytes.Text();

  // Criteria that read are comparisons of a named column with a text, a
  // number or a truth value.
  const auto comparisons =
      fuzz::Try([&] { return detail::ParseCriteria(criteria); }, {kCriteriaSyntax});
  const auto readable = [](const detail::Comparison& c) {
    return !c.column.empty() && (c.literal.IsString() || c.literal.type() == VarType::Double ||
                                 c.literal.type() == VarType::Boolean);
  };
  FUZZ_CHECK(!comparisons || (!comparisons->empty() && std::ranges::all_of(*comparisons, readable)),
             ToUtf8(criteria));

  // Criteria that found a row find the same row again.
  const auto row = [&] {
    std::vector<Variant> values;
    for (int32_t i = 0; i < rs->Fields().Count(); ++i)
      values.push_back(rs->Fields().Item(i).Value());
    return values;
  };
  if (Searched(*rs, criteria) && !rs->NoMatch()) {
    const auto found = row();
    FUZZ_CHECK(Searched(*rs, criteria) && !rs->NoMatch() && row() == found, ToUtf8(criteria));
  }

  // A text from a row, or the fuzzer's own text, quoted as the language
  // wants; the row's own value must be found, and the other searched for
  // without a failure.
  rs->MoveFirst();
  for (int i = 0; i < row_choice % 8 && !rs->Eof(); ++i)
    rs->MoveNext();
  if (rs->Eof()) return 0;
  const auto fields = rs->Fields();
  const auto column = fields.Item(static_cast<int32_t>(column_choice % fields.Count()));
  const Variant value = column.Value();
  if (!value.IsString()) return 0;
  const String own = u"[" + column.Name() + u"]=" + Quoted(value.AsString());
  FUZZ_CHECK(Searched(*rs, own) && !rs->NoMatch(), ToUtf8(own));
  const String typed = u"[" + column.Name() + u"]=" + Quoted(criteria);
  FUZZ_CHECK(Searched(*rs, typed), ToUtf8(typed));
  return 0;
}
