// Late binding of the kit and ADO objects: the members a script or another
// component may call by name.
#include <optional>

#include "kavrin/Ado.h"
#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/KitDatabase.h"
#include "runtime/Arguments.h"

namespace kavrin {

namespace {

bool Is(StringView name, StringView member) {
  return EqualsNoCase(name, member);
}

// A Field reached by name: Value (its default member) and Name.
class FieldObject final : public Dispatch {
 public:
  explicit FieldObject(ado::Field field) : field_(std::move(field)) {}
  String TypeName() const override { return u"Field"; }
  Variant Invoke(StringView name, InvokeKind, std::span<Variant> args) override {
    CheckArgumentCount(args, 0, 0);
    if (name.empty() || Is(name, u"Value")) return field_.Value();
    if (Is(name, u"Name")) return field_.Name();
    ThrowMemberNotFound(TypeName(), name);
  }

 private:
  ado::Field field_;
};

// The Fields collection: Item (its default member) and Count.
class FieldsObject final : public Dispatch {
 public:
  explicit FieldsObject(ado::Fields fields) : fields_(std::move(fields)) {}
  String TypeName() const override { return u"Fields"; }
  Variant Invoke(StringView name, InvokeKind, std::span<Variant> args) override {
    if (Is(name, u"Count")) {
      CheckArgumentCount(args, 0, 0);
      return fields_.Count();
    }
    if (name.empty() || Is(name, u"Item")) {
      CheckArgumentCount(args, 1, 1);
      return ItemObject(args[0]);
    }
    ThrowMemberNotFound(TypeName(), name);
  }
  std::shared_ptr<Dispatch> ItemObject(const Variant& key) const {
    if (key.IsString()) return std::make_shared<FieldObject>(fields_.Item(key.AsString()));
    return std::make_shared<FieldObject>(fields_.Item(ToLong(key)));
  }

 private:
  ado::Fields fields_;
};

// Fields, or with a key the field named by it, as `rs.Fields("x")` reads.
Variant FieldsMember(const ado::Fields& fields, std::span<Variant> args) {
  CheckArgumentCount(args, 0, 1);
  auto object = std::make_shared<FieldsObject>(fields);
  if (args.empty()) return Variant(std::shared_ptr<Dispatch>(object));
  return Variant(object->ItemObject(args[0]));
}

// The members a kit record set and an ADO record set answer alike: position,
// count, fields, moves and Close. Nothing for any other name.
template <typename RecordSet>
std::optional<Variant> RecordSetMember(RecordSet& rs, StringView name, std::span<Variant> args) {
  if (Is(name, u"BOF")) return rs.Bof();
  if (Is(name, u"EOF")) return rs.Eof();
  if (Is(name, u"Fields")) return FieldsMember(rs.Fields(), args);
  if (Is(name, u"RecordCount")) return rs.RecordCount();
  if (Is(name, u"MoveNext")) return rs.MoveNext(), Variant();
  if (Is(name, u"MoveFirst")) return rs.MoveFirst(), Variant();
  if (Is(name, u"MoveLast")) return rs.MoveLast(), Variant();
  if (Is(name, u"Close")) return rs.Close(), Variant();
  return std::nullopt;
}

}  // namespace

Variant ado::Connection::Invoke(StringView name, InvokeKind, std::span<Variant>) {
  ThrowMemberNotFound(TypeName(), name);
}

Variant ado::Recordset::Invoke(StringView name, InvokeKind kind, std::span<Variant> args) {
  if (Is(name, u"CursorLocation")) {
    if (kind == InvokeKind::PropertyPut) {
      CheckArgumentCount(args, 1, 1);
      CursorLocation(ToLong(args[0]));
      return {};
    }
    return CursorLocation();
  }
  if (Is(name, u"Open")) {
    CheckArgumentCount(args, 2, 5);
    const auto& connection = args[1].AsObject();
    auto ado_connection = std::dynamic_pointer_cast<ado::Connection>(connection);
    if (connection && !ado_connection) throw Error::Runtime(errors::kTypeMismatch);
    auto number = [&](size_t i, int32_t fallback) {
      const Variant& v = ArgumentAt(args, i);
      return v.IsMissing() ? fallback : ToLong(v);
    };
    Open(ToString(args[0]), ado_connection, number(2, adOpenForwardOnly), number(3, adLockReadOnly),
         number(4, adCmdText));
    return {};
  }
  CheckArgumentCount(args, 0, Is(name, u"Fields") ? 1 : 0);
  if (auto answer = RecordSetMember(*this, name, args)) return *std::move(answer);
  ThrowMemberNotFound(TypeName(), name);
}

Variant KitRecordset::Invoke(StringView name, InvokeKind, std::span<Variant> args) {
  if (Is(name, u"FindFirst")) {
    CheckArgumentCount(args, 1, 1);
    FindFirst(ToString(args[0]));
    return {};
  }
  CheckArgumentCount(args, 0, Is(name, u"Fields") ? 1 : 0);
  if (Is(name, u"AdoRecordset")) return Variant(std::shared_ptr<Dispatch>(AdoRecordset()));
  if (Is(name, u"NoMatch")) return NoMatch();
  if (auto answer = RecordSetMember(*this, name, args)) return *std::move(answer);
  ThrowMemberNotFound(TypeName(), name);
}

Variant KitDatabase::Invoke(StringView name, InvokeKind, std::span<Variant> args) {
  if (Is(name, u"OpenQuery")) {
    CheckArgumentCount(args, 2, 5);
    return Variant(std::shared_ptr<Dispatch>(OpenQuery(ToString(args[0]), args[1])));
  }
  if (Is(name, u"Connection")) {
    CheckArgumentCount(args, 0, 0);
    return Variant(std::shared_ptr<Dispatch>(Connection()));
  }
  ThrowMemberNotFound(TypeName(), name);
}

}  // namespace kavrin
