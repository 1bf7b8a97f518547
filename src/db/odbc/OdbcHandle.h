// The ODBC handles the driver works with, and the driver's diagnostics as
// the library's errors (provider numbers chosen by SQLSTATE).
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstdint>
#include <optional>

#include "kavrin/Error.h"
#include "kavrin/String.h"

namespace kavrin::db::odbc {

inline bool Succeeded(SQLRETURN rc) {
  return rc == SQL_SUCCESS || rc == SQL_SUCCESS_WITH_INFO;
}

inline SQLWCHAR* Wide(const char16_t* text) {
  return reinterpret_cast<SQLWCHAR*>(const_cast<char16_t*>(text));
}

// The driver's diagnostics for the latest call on `handle`, as an Error:
// each message with its SQLSTATE, the number from the first one. `number`,
// when given, overrides the number the SQLSTATE would give.
Error Diagnostics(SQLSMALLINT type, SQLHANDLE handle, StringView doing,
                  std::optional<int32_t> number = std::nullopt);
// Throws those diagnostics.
[[noreturn]] void Fail(SQLSMALLINT type, SQLHANDLE handle, StringView doing,
                       std::optional<int32_t> number = std::nullopt);

// One ODBC handle, freed with its owner.
class Handle {
 public:
  Handle() = default;
  // Allocates a handle of `type` under `parent`; throws when the driver cannot.
  Handle(SQLSMALLINT type, SQLHANDLE parent);
  ~Handle() { Reset(); }
  Handle(Handle&& other) noexcept : type_(other.type_), handle_(other.handle_) {
    other.handle_ = SQL_NULL_HANDLE;
  }
  Handle& operator=(Handle&& other) noexcept {
    if (this != &other) {
      Reset();
      type_ = other.type_;
      handle_ = other.handle_;
      other.handle_ = SQL_NULL_HANDLE;
    }
    return *this;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  SQLHANDLE get() const { return handle_; }
  SQLSMALLINT type() const { return type_; }
  explicit operator bool() const { return handle_ != SQL_NULL_HANDLE; }
  // A statement is closed before it is freed: psqlODBC keeps the result of
  // a prepared statement that failed until then, and loses it when freed.
  void Reset() {
    if (handle_ == SQL_NULL_HANDLE) return;
    if (type_ == SQL_HANDLE_STMT) SQLFreeStmt(handle_, SQL_CLOSE);
    SQLFreeHandle(type_, handle_);
    handle_ = SQL_NULL_HANDLE;
  }

 private:
  SQLSMALLINT type_ = SQL_HANDLE_ENV;
  SQLHANDLE handle_ = SQL_NULL_HANDLE;
};

// Throws the driver's diagnostics unless `rc` tells success or no data.
inline void Check(const Handle& handle, SQLRETURN rc, StringView doing) {
  if (!Succeeded(rc) && rc != SQL_NO_DATA) Fail(handle.type(), handle.get(), doing);
}

}  // namespace kavrin::db::odbc
