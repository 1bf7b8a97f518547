#include "JsonValues.h"

#include "ListControl.h"
#include "kavrin/Convert.h"
#include "kavrin/Dao.h"
#include "kavrin/Dispatch.h"
#include "kavrin/OleDate.h"

namespace kavrin::tool {

namespace {

using json = nlohmann::ordered_json;

VarType ElementType(const std::string& name) {
  for (VarType type : {VarType::Integer, VarType::Long, VarType::Byte, VarType::Double,
                       VarType::Boolean, VarType::Date, VarType::String, VarType::Variant}) {
    if (ToUtf8(TypeName(type)) == name) return type;
  }
  throw UsageError("unknown array element type: " + name);
}

Variant ArrayFromJson(const json& object) {
  const json& items = object.at("$array");
  if (!items.is_array()) throw UsageError("\"$array\" takes a JSON array");
  const int32_t lbound = object.value("$lbound", 0);
  const VarType type = ElementType(object.value("$type", std::string("Variant")));
  Array array(lbound, type, items.size());
  for (size_t i = 0; i < items.size(); ++i) {
    array.Store(lbound + static_cast<int32_t>(i), ArgumentFromJson(items[i]));
  }
  return array;
}

Variant ObjectFromJson(const json& object) {
  if (object.contains("$missing")) return Variant::Missing();
  if (object.contains("$empty")) return Variant();
  if (object.contains("$nothing")) return Variant::Nothing();
  if (object.contains("$date")) {
    const auto date = ParseDate(FromUtf8(object.at("$date").get<std::string>()));
    if (!date) throw UsageError("unreadable date: " + object.at("$date").dump());
    return *date;
  }
  if (object.contains("$array")) return ArrayFromJson(object);
  if (object.contains("$list")) {
    std::vector<String> items;
    for (const auto& item : object.at("$list")) {
      items.push_back(item.is_string() ? FromUtf8(item.get<std::string>()) : FromUtf8(item.dump()));
    }
    return Variant(std::shared_ptr<Dispatch>(std::make_shared<ListControl>(std::move(items))));
  }
  if (object.contains("$dao")) {
    // A desktop database opened from a SQLite file; one that cannot be opened
    // is the caller's mistake, reported as a usage error below.
    const json& path = object.at("$dao");
    if (!path.is_string()) throw UsageError("\"$dao\" takes the path of a SQLite file");
    return Variant(
        std::shared_ptr<Dispatch>(dao::Database::Open(FromUtf8(path.get<std::string>()))));
  }
  throw UsageError("unknown argument object: " + object.dump());
}

}  // namespace

Variant ArgumentFromJson(const json& value) {
  try {
    switch (value.type()) {
      case json::value_t::null:
        return Variant::Null();
      case json::value_t::boolean:
        return value.get<bool>();
      case json::value_t::string:
        return FromUtf8(value.get<std::string>());
      case json::value_t::number_integer:
      case json::value_t::number_unsigned: {
        const double d = value.get<double>();
        if (d >= INT32_MIN && d <= INT32_MAX) return static_cast<int32_t>(value.get<int64_t>());
        return d;
      }
      case json::value_t::number_float:
        return value.get<double>();
      case json::value_t::object:
        return ObjectFromJson(value);
      default:
        throw UsageError("unreadable argument: " + value.dump());
    }
  } catch (const json::exception& e) {
    throw UsageError(std::string("unreadable argument: ") + e.what());
  } catch (const Error& e) {
    throw UsageError("unreadable argument " + value.dump() + ": " + e.what());
  }
}

Variant ArgumentFromCommandLine(const std::string& arg) {
  json parsed = json::parse(arg, nullptr, /*allow_exceptions=*/false);
  if (parsed.is_discarded()) return FromUtf8(arg);
  return ArgumentFromJson(parsed);
}

json ValueToJson(const Variant& value) {
  json out;
  out["type"] = ToUtf8(TypeName(value.type()));
  switch (value.type()) {
    case VarType::Empty:
      break;
    case VarType::Missing:
      out["type"] = "Missing";
      break;
    case VarType::Null:
      out["value"] = nullptr;
      break;
    case VarType::Integer:
      out["value"] = value.AsInteger();
      break;
    case VarType::Long:
      out["value"] = value.AsLong();
      break;
    case VarType::Byte:
      out["value"] = value.AsByte();
      break;
    case VarType::Double:
      out["value"] = value.AsDouble();
      break;
    case VarType::Boolean:
      out["value"] = value.AsBoolean();
      break;
    case VarType::Date:
      out["value"] = ToUtf8(FormatIsoDateTime(value.AsDate()));
      break;
    case VarType::String:
      out["value"] = ToUtf8(value.AsString());
      break;
    case VarType::Object: {
      const auto& object = value.AsObject();
      if (!object) {
        out["value"] = nullptr;
      } else if (auto list = std::dynamic_pointer_cast<ListControl>(object)) {
        json items = json::array();
        for (const auto& item : list->items())
          items.push_back(ToUtf8(item));
        out["value"] = {{"items", items}};
      } else if (auto database = std::dynamic_pointer_cast<dao::Database>(object)) {
        out["value"] = {{"typeName", ToUtf8(database->TypeName())},
                        {"name", ToUtf8(database->Name())}};
      } else {
        out["value"] = {{"typeName", ToUtf8(object->TypeName())}};
      }
      break;
    }
    case VarType::Array: {
      const Array& array = value.AsArray();
      json items = json::array();
      for (const auto& item : array.items())
        items.push_back(ValueToJson(item));
      out["value"] = {{"lbound", array.lbound()}, {"items", items}};
      break;
    }
    case VarType::Variant:
      break;
  }
  return out;
}

}  // namespace kavrin::tool
