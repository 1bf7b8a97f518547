// clsPub called by late binding with anything: a short sequence of calls on
// one object over the demo company, each a member chosen by number (or a name
// it does not have), called as a method or as its own kind, with Variant
// arguments of every type, too few or too many. Every call answers or fails
// with a kavrin::Error of a known number; the members that trap their
// failures fail only while their arguments are read; no argument a member
// does not write changes; and the database is never written.
#include "FuzzSupport.h"
#include "kavrin/Dao.h"
#include "kavrin/clsPub.h"
#include "support/FakeUi.h"

using namespace kavrin;

namespace {

// Texts the suite's data and SQL are made of, so calls reach real rows and
// the engine's edges as well as misses.
const char16_t* const kWords[] = {
    // codes
    u"", u" ", u"01", u"010101", u"0101", u"02", u"0201", u"1", u"11", u"21", u"V001", u"C001",
    u"001", u"03", u"  01  ",
    // settings, tables and columns
    u"AA", u"IA", u"GL", u"cGoodClass", u"cDepLevel", u"cValue", u"Inventory", u"Warehouse",
    u"cInvCode", u"cInvName", u"cWhCode", u"cDepCode", u"cWhName", u"bTrack", u"iInvRCost",
    u"Department", u"AccInformation", u"Rd_Style",
    // quotes and SQL
    u"'", u"''", u"' OR '1'='1", u"01' --", u"x' UNION SELECT sql FROM sqlite_schema --",
    u"Inventory; DELETE FROM Inventory", u"Inventory where 1=0; ATTACH 'a' AS a",
    u"substring(cInvCode,1,len(cInvCode))", u"right(cInvCode,2)", u"load_extension('x')",
    u"PRAGMA user_version=1",
    // list entries, a number, a date
    u"01 Steel", u"0101      North Store", u"-1", u"2026-03-31"};

// The members that fail only while their arguments are read: the six that
// trap their failures, and the probe for a desktop table.
constexpr StringView kOnlyArgumentErrors[] = {
    u"CodeToName",         u"InvCodeToUnit", u"InvCodeToUnitPrice", u"InvCodeToClass",
    u"WhCodeToValueStyle", u"WhCodeToDep",   u"ExistTableQueryDAO"};

struct World {
  std::shared_ptr<KitDatabase> db = fuzz::Fixture::Get().Open();
  std::shared_ptr<dao::Database> desktop = dao::Database::Open(FromUtf8(fuzz::Fixture::Get().path));
  std::shared_ptr<testing::FakeUiHost> ui = std::make_shared<testing::FakeUiHost>();
  std::string original = fuzz::Fixture::Get().Bytes();
  size_t runs = 0;

  World() { SetUiHost(ui); }
};

World& TheWorld() {
  static World world;
  return world;
}

Variant ArgumentFrom(fuzz::ByteReader& bytes, clsPub& self) {
  const uint8_t kind = bytes.Byte() % 20;
  if (kind < 10) return bytes.Value(kind);
  auto object = [](std::shared_ptr<Dispatch> p) { return Variant(std::move(p)); };
  if (kind == 13) return Variant(static_cast<int32_t>(bytes.Byte() % 16) - 2);
  if (kind == 14) return object(std::make_shared<testing::FakeList>());
  if (kind == 15) return object(TheWorld().desktop);
  if (kind == 16) return Variant::Nothing();
  if (kind == 17)
    return object(bytes.Byte() % 2 == 0 ? TheWorld().db : std::make_shared<KitDatabase>());
  if (kind == 18) {
    const uint8_t shape = bytes.Byte();
    const VarType types[] = {VarType::Boolean, VarType::Variant, VarType::String, VarType::Integer};
    return Variant(Array(static_cast<int8_t>(bytes.Byte()), types[shape % 4], shape % 12));
  }
  // The object itself: it is a Dispatch, and not what any member takes.
  if (kind == 19) return object(std::shared_ptr<Dispatch>(std::shared_ptr<Dispatch>{}, &self));
  return Variant(kWords[bytes.Byte() % std::size(kWords)]);
}

// Equal values, a NaN being the same as itself.
bool Same(const Variant& a, const Variant& b) {
  const auto nan = [](const Variant& v) {
    return (v.type() == VarType::Double && std::isnan(v.AsDouble())) ||
           (v.type() == VarType::Date && std::isnan(v.AsDate().value));
  };
  return a == b || (a.type() == b.type() && nan(a) && nan(b));
}

void Call(clsPub& pub, fuzz::ByteReader& bytes) {
  const auto members = clsPub::Members();
  const uint8_t choice = bytes.Byte();
  const MemberInfo* member = choice < 250 ? &members[choice % members.size()] : nullptr;
  const String name = member ? String(member->name) : bytes.Text();
  const InvokeKind kind = member && bytes.Byte() % 4 != 0 ? member->kind : InvokeKind::Method;
  const size_t declared = member ? member->parameters.size() : 0;
  std::vector<Variant> args(bytes.Byte() % (declared + 2));
  for (auto& arg : args)
    arg = ArgumentFrom(bytes, pub);
  const std::vector<Variant> before = args;

  try {
    FUZZ_CHECK(!pub.Invoke(name, kind, args).IsMissing(), ToUtf8(name));
  } catch (const Error& e) {
    fuzz::CheckKnownError(e);
    // Too many (450), one missing (449), one that does not convert (13, 6, 94).
    if (member && std::ranges::count(kOnlyArgumentErrors, name) == 1) {
      fuzz::CheckKnownError(
          e, {errors::kWrongArgumentCount, errors::kArgumentNotOptional, errors::kTypeMismatch,
              errors::kOverflow, errors::kInvalidUseOfNull});
    }
  }  // Anything else escapes and ends the run.

  // Only the parameters a member writes may change in the caller's Variants.
  for (size_t i = 0; i < args.size(); ++i) {
    const bool written =
        member && kind == member->kind && i < declared && member->parameters[i].written;
    FUZZ_CHECK(written || Same(args[i], before[i]), ToUtf8(name) + " changed an argument");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  World& world = TheWorld();
  fuzz::ByteReader bytes(data, size);
  const uint8_t setup = bytes.Byte();
  world.ui->focused = nullptr;
  world.ui->shown.clear();
  if (setup & 1)
    world.ui->focused = std::make_shared<testing::FakeControl>(u"TextBox", bytes.Text());
  if (setup & 2)
    world.ui->focused = std::make_shared<testing::FakeControl>(u"CommandButton", u"OK");
  {
    clsPub pub;
    if (!(setup & 4)) pub.DBIA(world.db);
    for (int calls = 0; calls < 4 && !bytes.Empty(); ++calls)
      Call(pub, bytes);
  }
  FUZZ_CHECK(fuzz::Fixture::Get().DirectoryHoldsOnlyTheDatabase(),
             "no journal, log or attached file");
  if (++world.runs % 1024 == 0) {
    FUZZ_CHECK(fuzz::Fixture::Get().Bytes() == world.original, "the database file changed");
  }
  return 0;
}
