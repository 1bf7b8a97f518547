// Opening objects, holding handles and calling members by name: the C
// interface over the component's late binding (Dispatch::Invoke).
#include <vector>

#include "capi/Handles.h"
#include "kavrin/Dao.h"
#include "kavrin/Error.h"
#include "kavrin/KitDatabase.h"
#include "kavrin/clsPub.h"

namespace kavrin::capi {

namespace {

[[noreturn]] void Fail(int32_t number) {
  throw Error::Runtime(number);
}

StringView Required(const char* text, String& storage) {
  if (!text) Fail(errors::kInvalidProcedureCall);
  storage = FromUtf8(text);
  return storage;
}

kavrin_object* NewHandle(std::shared_ptr<Dispatch> object) {
  return new kavrin_object{std::move(object)};
}

Dispatch& Target(kavrin_object* object) {
  if (!object || !object->object) Fail(errors::kObjectNotSet);
  return *object->object;
}

// Writes back into the caller's values the arguments the member changed.
void WriteBack(std::span<const Variant> before, std::span<const Variant> after, kavrin_value* args,
               bool utf16) {
  for (size_t i = 0; i < after.size(); ++i) {
    if (after[i] == before[i]) continue;
    kavrin_value_clear(&args[i]);
    FromVariant(after[i], args[i], utf16);
  }
}

}  // namespace

}  // namespace kavrin::capi

using namespace kavrin;
using namespace kavrin::capi;

extern "C" {

const char* kavrin_version(void) {
  return KAVRIN_VERSION_TEXT;
}

int kavrin_create_object(const char* prog_id, kavrin_object** object, kavrin_error** error) {
  if (object) *object = nullptr;
  return Guard(error, [&] {
    if (!object) Fail(errors::kInvalidProcedureCall);
    String id;
    *object = NewHandle(CreateObject(Required(prog_id, id)));
  });
}

int kavrin_open_database(const char* connection, kavrin_object** database, kavrin_error** error) {
  if (database) *database = nullptr;
  return Guard(error, [&] {
    if (!database) Fail(errors::kInvalidProcedureCall);
    String text;
    *database = NewHandle(KitDatabase::Open(Required(connection, text)));
  });
}

int kavrin_open(const char* connection, kavrin_object** pub, kavrin_error** error) {
  if (pub) *pub = nullptr;
  return Guard(error, [&] {
    if (!pub) Fail(errors::kInvalidProcedureCall);
    std::shared_ptr<Dispatch> object = CreateObject(identifiers::kProgId);
    if (connection) {
      String text;
      Variant database(std::shared_ptr<Dispatch>(KitDatabase::Open(Required(connection, text))));
      object->Invoke(u"DBIA", InvokeKind::PropertyPutRef, std::span<Variant>(&database, 1));
    }
    *pub = NewHandle(std::move(object));
  });
}

int kavrin_open_dao(const char* path, kavrin_object** database, kavrin_error** error) {
  if (database) *database = nullptr;
  return Guard(error, [&] {
    if (!database) Fail(errors::kInvalidProcedureCall);
    String text;
    *database = NewHandle(dao::Database::Open(Required(path, text)));
  });
}

kavrin_object* kavrin_object_retain(kavrin_object* object) {
  if (!object) return nullptr;
  try {
    return NewHandle(object->object);
  } catch (...) {
    return nullptr;
  }
}

void kavrin_object_release(kavrin_object* object) {
  delete object;
}

int kavrin_object_type_name(kavrin_object* object, kavrin_value* name, kavrin_error** error) {
  return Guard(error, [&] {
    if (!name) Fail(errors::kInvalidProcedureCall);
    *name = kavrin_value{};
    FromVariant(Variant(Target(object).TypeName()), *name, false);
  });
}

int kavrin_invoke(kavrin_object* object, const char* name, int32_t invoke_kind, kavrin_value* args,
                  size_t count, kavrin_value* result, int32_t flags, kavrin_error** error) {
  return Guard(error, [&] {
    Dispatch& target = Target(object);
    if (!name || (count > 0 && !args)) Fail(errors::kInvalidProcedureCall);
    if (invoke_kind < KAVRIN_METHOD || invoke_kind > KAVRIN_PROPERTY_PUT_REF)
      Fail(errors::kInvalidProcedureCall);
    const bool utf16 = (flags & KAVRIN_ANSWER_UTF16) != 0;
    const String member = FromUtf8(name);

    std::vector<Variant> values;
    values.reserve(count);
    for (size_t i = 0; i < count; ++i)
      values.push_back(ToVariant(args[i]));
    const std::vector<Variant> before = values;

    Variant answer;
    try {
      answer = target.Invoke(member, static_cast<InvokeKind>(invoke_kind), values);
    } catch (...) {
      // A member that fails part-way has still written what it wrote.
      WriteBack(before, values, args, utf16);
      throw;
    }
    WriteBack(before, values, args, utf16);
    if (result) FromVariant(answer, *result, utf16);
  });
}

}  // extern "C"
