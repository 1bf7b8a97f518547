// clsPub called by late binding with anything: a short sequence of calls on
// one object over the demo company, each a member chosen by number (or a name
// it does not have), called as a method or as its own kind, with Variant
// arguments of every type, too few or too many. Every call answers or fails
// with a kavrin::Error of a known number; the members that trap their
// failures fail only while their arguments are read; no argument a member
// does not write changes; and the database is never written.
#include <array>
#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>

#include "Fixture.h"
#include "FuzzSupport.h"
#include "kavrin/Dao.h"
#include "kavrin/Host.h"
#include "kavrin/clsPub.h"

using namespace kavrin;

namespace {

// Texts the suite's data and SQL are made of, so calls reach real rows and
// the engine's edges as well as misses.
constexpr std::array<const char16_t*, 48> kWords = {u"",
                                                    u" ",
                                                    u"01",
                                                    u"010101",
                                                    u"0101",
                                                    u"02",
                                                    u"0201",
                                                    u"1",
                                                    u"11",
                                                    u"21",
                                                    u"V001",
                                                    u"C001",
                                                    u"001",
                                                    u"03",
                                                    u"  01  ",
                                                    u"AA",
                                                    u"IA",
                                                    u"GL",
                                                    u"cGoodClass",
                                                    u"cDepLevel",
                                                    u"cValue",
                                                    u"Inventory",
                                                    u"Warehouse",
                                                    u"cInvCode",
                                                    u"cInvName",
                                                    u"cWhCode",
                                                    u"cDepCode",
                                                    u"cWhName",
                                                    u"bTrack",
                                                    u"iInvRCost",
                                                    u"Department",
                                                    u"AccInformation",
                                                    u"Rd_Style",
                                                    u"'",
                                                    u"''",
                                                    u"' OR '1'='1",
                                                    u"01' --",
                                                    u"x' UNION SELECT sql FROM sqlite_schema --",
                                                    u"Inventory; DELETE FROM Inventory",
                                                    u"Inventory where 1=0; ATTACH 'a' AS a",
                                                    u"substring(cInvCode,1,len(cInvCode))",
                                                    u"right(cInvCode,2)",
                                                    u"load_extension('x')",
                                                    u"PRAGMA user_version=1",
                                                    u"01 Steel",
                                                    u"0101      North Store",
                                                    u"-1",
                                                    u"2026-03-31"};

// A list control as a form's combo box answers it: Clear and AddItem.
class ListControl final : public Dispatch {
 public:
  String TypeName() const override { return u"ComboBox"; }
  Variant Invoke(StringView name, InvokeKind, std::span<Variant> args) override {
    if (EqualsNoCase(name, u"Clear")) {
      items_.clear();
      return {};
    }
    if (EqualsNoCase(name, u"AddItem") && !args.empty()) {
      items_.push_back(args[0]);
      return {};
    }
    ThrowMemberNotFound(TypeName(), name);
  }

 private:
  std::vector<Variant> items_;
};

// A focused control that is a text box holding a text, or another control.
class Control final : public Dispatch {
 public:
  Control(String type, String text) : type_(std::move(type)), text_(std::move(text)) {}
  String TypeName() const override { return type_; }
  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override {
    if (EqualsNoCase(name, u"Text") && kind == InvokeKind::PropertyGet) return text_;
    if ((EqualsNoCase(name, u"SelStart") || EqualsNoCase(name, u"SelLength")) &&
        kind == InvokeKind::PropertyPut && args.size() == 1) {
      return {};
    }
    ThrowMemberNotFound(TypeName(), name);
  }

 private:
  String type_;
  String text_;
};

// The host's forms: the focused control is whatever the input last set.
class FuzzUiHost final : public UiHost {
 public:
  std::shared_ptr<Dispatch> ActiveControl() override {
    if (!focused) throw Error::Runtime(errors::kObjectNotSet);
    return focused;
  }
  int32_t MsgBox(StringView, int32_t, StringView) override { return vbOK; }
  std::shared_ptr<Dispatch> focused;
};

struct World {
  std::shared_ptr<KitDatabase> db = fuzz::Fixture::Get().Open();
  std::shared_ptr<dao::Database> desktop =
      dao::Database::Open(FromUtf8(fuzz::Fixture::Get().path()));
  std::shared_ptr<FuzzUiHost> ui = std::make_shared<FuzzUiHost>();
  std::string original = Contents();
  size_t runs = 0;

  World() { SetUiHost(ui); }

  static std::string Contents() {
    std::ifstream in(fuzz::Fixture::Get().path(), std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
  }
};

World& TheWorld() {
  static World world;
  return world;
}

Variant ArgumentFrom(fuzz::ByteReader& bytes, clsPub& self) {
  World& world = TheWorld();
  switch (bytes.Byte() % 20) {
    case 0:
      return Variant::Missing();
    case 1:
      return Variant();
    case 2:
      return Variant::Null();
    case 3:
      return Variant(static_cast<int16_t>(bytes.Word()));
    case 4:
      return Variant(static_cast<int32_t>(bytes.Long()));
    case 5:
      return Variant(bytes.Byte());
    case 6:
      return Variant(bytes.Double());
    case 7:
      return Variant(bytes.Byte() % 2 == 0);
    case 8:
      return Variant(Date{bytes.Double()});
    case 9:
      return Variant(bytes.Text());
    case 10:
    case 11:
    case 12:
      return Variant(kWords[bytes.Byte() % kWords.size()]);
    case 13:
      return Variant(static_cast<int32_t>(bytes.Byte() % 16) - 2);
    case 14:
      return Variant(std::shared_ptr<Dispatch>(std::make_shared<ListControl>()));
    case 15:
      return Variant(std::shared_ptr<Dispatch>(world.desktop));
    case 16:
      return Variant::Nothing();
    case 17:
      return Variant(std::shared_ptr<Dispatch>(
          bytes.Byte() % 2 == 0 ? world.db : std::make_shared<KitDatabase>()));
    case 18: {
      const uint8_t shape = bytes.Byte();
      const VarType types[] = {VarType::Boolean, VarType::Variant, VarType::String,
                               VarType::Integer};
      return Variant(Array(static_cast<int8_t>(bytes.Byte()), types[shape % 4], shape % 12));
    }
    default:
      // The object itself: it is a Dispatch, and not what any member takes.
      return Variant(std::shared_ptr<Dispatch>(std::shared_ptr<Dispatch>{}, &self));
  }
}

// Equal values, a NaN being the same as itself.
bool Same(const Variant& a, const Variant& b) {
  if (a.type() == VarType::Double && b.type() == VarType::Double) {
    return a.AsDouble() == b.AsDouble() || (std::isnan(a.AsDouble()) && std::isnan(b.AsDouble()));
  }
  if (a.type() == VarType::Date && b.type() == VarType::Date) {
    return a.AsDate() == b.AsDate() ||
           (std::isnan(a.AsDate().value) && std::isnan(b.AsDate().value));
  }
  return a == b;
}

// The numbers reading the arguments fails with: too many (450), one missing
// (449), one that does not convert (13, 6, 94).
bool IsArgumentError(int32_t number) {
  return number == errors::kWrongArgumentCount || number == errors::kArgumentNotOptional ||
         number == errors::kTypeMismatch || number == errors::kOverflow ||
         number == errors::kInvalidUseOfNull;
}

bool Traps(StringView name) {
  for (const char16_t* trapping : {u"CodeToName", u"InvCodeToUnit", u"InvCodeToUnitPrice",
                                   u"InvCodeToClass", u"WhCodeToValueStyle", u"WhCodeToDep"}) {
    if (name == trapping) return true;
  }
  return false;
}

void Call(clsPub& pub, fuzz::ByteReader& bytes) {
  const auto members = clsPub::Members();
  const uint8_t choice = bytes.Byte();
  const MemberInfo* member = choice < 250 ? &members[choice % members.size()] : nullptr;
  const String name = member ? String(member->name) : bytes.Text();
  const InvokeKind kind = member && bytes.Byte() % 4 != 0 ? member->kind : InvokeKind::Method;
  const size_t declared = member ? member->parameters.size() : 0;
  const size_t count = bytes.Byte() % (declared + 2);
  std::vector<Variant> args;
  for (size_t i = 0; i < count; ++i)
    args.push_back(ArgumentFrom(bytes, pub));
  const std::vector<Variant> before = args;

  try {
    const Variant result = pub.Invoke(name, kind, args);
    FUZZ_CHECK(!result.IsMissing(), ToUtf8(name));
  } catch (const Error& e) {
    fuzz::CheckKnownError(e);
    if (member && Traps(member->name)) FUZZ_CHECK(IsArgumentError(e.number()), e.what());
    if (member && String(member->name) == u"ExistTableQueryDAO") {
      FUZZ_CHECK(IsArgumentError(e.number()), e.what());
    }
  } catch (const std::exception& e) {
    FUZZ_CHECK(false, std::string("not a kavrin::Error: ") + e.what());
  }

  // Only the parameters a member writes may change in the caller's Variants.
  const bool as_declared = member && kind == member->kind;
  for (size_t i = 0; i < args.size(); ++i) {
    const bool written = as_declared && i < declared && member->parameters[i].written;
    if (!written) FUZZ_CHECK(Same(args[i], before[i]), ToUtf8(name) + " changed an argument");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  World& world = TheWorld();
  fuzz::ByteReader bytes(data, size);
  const uint8_t setup = bytes.Byte();
  world.ui->focused = nullptr;
  if (setup & 1) world.ui->focused = std::make_shared<Control>(u"TextBox", bytes.Text());
  if (setup & 2) world.ui->focused = std::make_shared<Control>(u"CommandButton", u"OK");
  {
    clsPub pub;
    if (!(setup & 4)) pub.DBIA(world.db);
    for (int calls = 0; calls < 4 && !bytes.Empty(); ++calls)
      Call(pub, bytes);
  }
  FUZZ_CHECK(fuzz::Fixture::Get().DirectoryHoldsOnlyTheDatabase(),
             "no journal, log or attached file");
  if (++world.runs % 1024 == 0) {
    FUZZ_CHECK(World::Contents() == world.original, "the database file changed");
  }
  return 0;
}
