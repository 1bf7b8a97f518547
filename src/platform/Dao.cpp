// The shipped desktop database: a SQLite file opened read-only, whose tables
// are its table definitions and whose views are its stored queries.
#include "kavrin/Dao.h"

#include "db/Driver.h"
#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "runtime/Arguments.h"

namespace kavrin::dao {

namespace {

class SqliteDesktopDatabase final : public Database {
 public:
  SqliteDesktopDatabase(String name, std::unique_ptr<db::Connection> engine)
      : name_(std::move(name)), engine_(std::move(engine)) {}

  String Name() const override { return name_; }

  std::shared_ptr<Definition> TableDefs(StringView name) const override {
    return Find(u"table", Definition::Kind::Table, name, sources::kDaoTableDefs);
  }

  std::shared_ptr<Definition> QueryDefs(StringView name) const override {
    return Find(u"view", Definition::Kind::Query, name, sources::kDaoQueryDefs);
  }

  void Close() override { engine_.reset(); }

 private:
  // The schema is read afresh on every lookup, so a file changed by another
  // program is seen as it stands. Names match as SQLite matches identifiers:
  // ASCII letters without regard to case, so a name finds at most one item.
  std::shared_ptr<Definition> Find(StringView type, Definition::Kind kind, StringView name,
                                   StringView collection) const {
    if (!engine_) throw Error::Standard(errors::kObjectInvalid, sources::kDaoDatabase);
    auto cursor =
        engine_->Query(u"SELECT name FROM sqlite_schema WHERE type='" + String(type) + u"'");
    while (cursor->Next()) {
      String stored = ToString(cursor->Value(0));
      if (EqualsNoCase(stored, name)) return std::make_shared<Definition>(kind, std::move(stored));
    }
    throw Error::Standard(errors::kItemNotFound, collection);
  }

  String name_;
  std::unique_ptr<db::Connection> engine_;
};

}  // namespace

String Definition::TypeName() const {
  return kind_ == Kind::Table ? u"TableDef" : u"QueryDef";
}

Variant Definition::Invoke(StringView name, InvokeKind, std::span<Variant> args) {
  CheckArgumentCount(args, 0, 0);
  if (EqualsNoCase(name, u"Name")) return name_;
  ThrowMemberNotFound(TypeName(), name);
}

Database::~Database() = default;

std::shared_ptr<Database> Database::Open(StringView path) {
  return std::make_shared<SqliteDesktopDatabase>(String(path), db::Open(u"sqlite:" + String(path)));
}

Variant Database::Invoke(StringView name, InvokeKind, std::span<Variant> args) {
  const bool table = EqualsNoCase(name, u"TableDefs");
  if (table || EqualsNoCase(name, u"QueryDefs")) {
    CheckArgumentCount(args, 1, 1);
    const String key = ToString(args[0]);
    return Variant(std::shared_ptr<Dispatch>(table ? TableDefs(key) : QueryDefs(key)));
  }
  CheckArgumentCount(args, 0, 0);
  if (EqualsNoCase(name, u"Name")) return Name();
  if (EqualsNoCase(name, u"Close")) return Close(), Variant();
  ThrowMemberNotFound(TypeName(), name);
}

}  // namespace kavrin::dao
