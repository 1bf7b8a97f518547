/* kavrin.h: the component from C, and from any language that can call C.
 *
 * A caller opens a clsPub on a connection string, calls its members by name
 * with typed values (kavrin_value, the platform's Variant kinds), and reads
 * the result, the arguments the member wrote and, on failure, the error's
 * number, source and description. Every call goes through the component's
 * own late binding: arguments are coerced exactly as for a script.
 *
 * Errors: no C++ exception crosses this interface. A function that can fail
 * answers 0 for success and 1 for failure; then, when the caller passed a
 * non-NULL `error`, *error is a new kavrin_error (free it with
 * kavrin_error_free). Misuse (a NULL handle, an unknown kind) fails the same
 * way with the platform's numbers: 91 for a missing object, 5 for an invalid
 * argument, 13 for a value of an unknown kind.
 *
 * Ownership:
 *  - kavrin_object handles come from kavrin_open, kavrin_open_database,
 *    kavrin_open_dao, kavrin_create_object, kavrin_object_new and
 *    kavrin_object_retain; each is released once with kavrin_object_release.
 *    A handle holds a shared reference: the object lives while any handle
 *    (or any Variant inside the component) refers to it.
 *  - A kavrin_value the caller fills in (zero it first, or use
 *    KAVRIN_VALUE_INIT) is only read during the call: its strings, array
 *    items and object handles stay the caller's.
 *  - A kavrin_value the library fills in (a result, an argument the member
 *    wrote) owns its strings, array items and object handle, and is released
 *    with kavrin_value_clear. To keep an object beyond that, take a handle of
 *    your own with kavrin_object_retain first. kavrin_value_clear on a value
 *    the caller filled in only resets it to Empty. Values of the other kinds
 *    than String, String16, Object and Array hold no storage: clearing them
 *    may be skipped.
 *  - Strings the library answers directly (error texts, member names,
 *    kavrin_version) live as long as the object they come from (the error;
 *    the process for the others).
 *
 * Threads: objects are not thread-safe. Call each object (and whatever it
 * handed out) from one thread at a time; separate objects may be used on
 * separate threads. kavrin_object_release, kavrin_value_clear and the error
 * functions may be called from any thread. The host installed with
 * kavrin_set_host is process-wide; installing is thread-safe, and its
 * callbacks, like those of objects made with kavrin_object_new, run on the
 * thread that made the call that reaches them.
 */
#ifndef KAVRIN_KAVRIN_H
#define KAVRIN_KAVRIN_H

#include <stddef.h>
#include <stdint.h>

#include "kavrin/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The kinds of value, numbered as the component's VarType. */
enum {
  KAVRIN_EMPTY = 0,
  KAVRIN_NULL = 1,
  KAVRIN_INTEGER = 2,  /* 16-bit, in u.i */
  KAVRIN_LONG = 3,     /* 32-bit, in u.i */
  KAVRIN_BYTE = 4,     /* 0..255, in u.i */
  KAVRIN_DOUBLE = 5,   /* u.d */
  KAVRIN_BOOLEAN = 6,  /* u.i: 0 False, anything else True (answered as -1) */
  KAVRIN_DATE = 7,     /* u.d: days since 30 December 1899, time as the fraction */
  KAVRIN_STRING = 8,   /* UTF-8 in u.utf8 (not NUL-terminated; length in bytes) */
  KAVRIN_OBJECT = 9,   /* u.object, NULL for Nothing */
  KAVRIN_ARRAY = 10,   /* u.array, one dimension; element_kind says what it holds */
  KAVRIN_MISSING = 11, /* an omitted optional argument */
  KAVRIN_VARIANT = 12, /* only as an array's element_kind: elements of any kind */
  KAVRIN_STRING16 = 13 /* a String as UTF-16 in u.utf16 (length in 16-bit units) */
};

/* How a member is invoked. */
enum {
  KAVRIN_METHOD = 0,
  KAVRIN_PROPERTY_GET = 1,
  KAVRIN_PROPERTY_PUT = 2,    /* the value is the last argument */
  KAVRIN_PROPERTY_PUT_REF = 3 /* the object is the last argument */
};

/* kavrin_invoke flags. */
enum {
  KAVRIN_ANSWER_UTF16 = 1 /* strings answered as KAVRIN_STRING16 instead of UTF-8 */
};

typedef struct kavrin_object kavrin_object;
typedef struct kavrin_error kavrin_error;

typedef struct kavrin_value {
  int32_t kind;
  int32_t element_kind; /* KAVRIN_ARRAY only */
  union {
    int32_t i;
    double d;
    struct {
      const char* data;
      size_t length;
    } utf8;
    struct {
      const uint16_t* data;
      size_t length;
    } utf16;
    kavrin_object* object;
    struct {
      struct kavrin_value* items;
      size_t count;
      int32_t lbound;
    } array;
  } u;
  /* The library's storage: NULL in a value the caller fills in, never NULL in
   * one the library fills in (so a caller sees which arguments were written). */
  void* owned_;
} kavrin_value;

#define KAVRIN_VALUE_INIT \
  { 0, 0, {0}, 0 }

/* The library's version, "MAJOR.MINOR.PATCH". */
KAVRIN_API const char* kavrin_version(void);

/* ---- Objects ---- */

/* A new clsPub whose DBIA is opened from `connection` ("sqlite:PATH", a path
 * ending in .db or .sqlite, "odbc:..."); NULL leaves DBIA empty. */
KAVRIN_API int kavrin_open(const char* connection, kavrin_object** pub, kavrin_error** error);
/* An object by its programmatic identifier ("Kavrin.clsPub"); 429 for others. */
KAVRIN_API int kavrin_create_object(const char* prog_id, kavrin_object** object,
                                    kavrin_error** error);
/* A KitDatabase opened from `connection`, to assign to a clsPub's DBIA. */
KAVRIN_API int kavrin_open_database(const char* connection, kavrin_object** database,
                                    kavrin_error** error);
/* A desktop database opened read-only from a SQLite file, for ExistTableQueryDAO. */
KAVRIN_API int kavrin_open_dao(const char* path, kavrin_object** database, kavrin_error** error);

/* Another handle to the same object (NULL for NULL). */
KAVRIN_API kavrin_object* kavrin_object_retain(kavrin_object* object);
/* Releases a handle; NULL is ignored. */
KAVRIN_API void kavrin_object_release(kavrin_object* object);
/* The object's type name ("clsPub", "KitDatabase", ...) as a library-owned
 * String value (release with kavrin_value_clear). */
KAVRIN_API int kavrin_object_type_name(kavrin_object* object, kavrin_value* name,
                                       kavrin_error** error);

/* Calls member `name` (UTF-8, letter case ignored) of `object` with `count`
 * arguments. On success *result holds the member's result (Empty for none).
 * Whether the call succeeds or fails, each argument the member wrote holds
 * the value written, owned by the library; the others are left untouched.
 * `result` may be NULL to drop it. */
KAVRIN_API int kavrin_invoke(kavrin_object* object, const char* name, int32_t invoke_kind,
                             kavrin_value* args, size_t count, kavrin_value* result, int32_t flags,
                             kavrin_error** error);

/* Releases what the library owns in `value` and makes it Empty. */
KAVRIN_API void kavrin_value_clear(kavrin_value* value);

/* ---- Errors ---- */

KAVRIN_API int32_t kavrin_error_number(const kavrin_error* error);
/* NUL-terminated UTF-8, owned by the error. */
KAVRIN_API const char* kavrin_error_source(const kavrin_error* error);
KAVRIN_API const char* kavrin_error_description(const kavrin_error* error);
/* The same texts NUL-terminated in UTF-16, owned by the error. */
KAVRIN_API const uint16_t* kavrin_error_source16(const kavrin_error* error);
KAVRIN_API const uint16_t* kavrin_error_description16(const kavrin_error* error);
/* A new error, for a callback to report its failure (texts in UTF-8; NULL
 * source is "", NULL description is the platform's standard one). */
KAVRIN_API kavrin_error* kavrin_error_new(int32_t number, const char* source,
                                          const char* description);
KAVRIN_API void kavrin_error_free(kavrin_error* error);

/* ---- clsPub's members ---- */

typedef struct kavrin_member {
  const char* name;    /* UTF-8, static */
  int32_t invoke_kind; /* KAVRIN_METHOD, KAVRIN_PROPERTY_GET or KAVRIN_PROPERTY_PUT_REF */
  int32_t result_kind; /* KAVRIN_EMPTY for none, KAVRIN_VARIANT for any */
  size_t parameter_count;
} kavrin_member;

typedef struct kavrin_parameter {
  const char* name; /* UTF-8, static */
  int32_t kind;     /* KAVRIN_VARIANT for any value, KAVRIN_OBJECT for an object */
  int32_t optional; /* 1 when it may be omitted */
  int32_t written;  /* 1 when the member writes into the caller's argument */
} kavrin_parameter;

/* The number of clsPub's members, in the fixed order of its interface. */
KAVRIN_API size_t kavrin_member_count(void);
/* Member `index` (0-based); 0 on success, 1 for an index past the end. */
KAVRIN_API int kavrin_member_info(size_t index, kavrin_member* member);
KAVRIN_API int kavrin_parameter_info(size_t member_index, size_t parameter_index,
                                     kavrin_parameter* parameter);

/* ---- Objects implemented by the caller ---- */

/* Called for each member call on an object made with kavrin_object_new.
 * `name` is UTF-8; `args` are library-owned values valid during the call
 * (strings as UTF-8). To write an argument by reference, overwrite args[i]
 * with a value of your own; to answer, fill *result. The library copies both
 * before the callback's storage may go, right after it returns. Answer 0 for
 * success, anything else for failure, with *error set by kavrin_error_new
 * (438 for a member the object does not have); without one the failure is
 * 440 (Automation error). */
typedef int (*kavrin_invoke_fn)(void* context, const char* name, int32_t invoke_kind,
                                kavrin_value* args, size_t count, kavrin_value* result,
                                kavrin_error** error);
/* Called once when the last reference to the object goes (may be NULL). */
typedef void (*kavrin_release_fn)(void* context);

/* An object whose members are the callback's (a list control with Clear and
 * AddItem, a text box for TextSelected) and whose type name is `type_name`.
 * NULL when `invoke` is NULL. */
KAVRIN_API kavrin_object* kavrin_object_new(const char* type_name, kavrin_invoke_fn invoke,
                                            kavrin_release_fn release, void* context);
/* The context of an object made with kavrin_object_new; NULL for any other. */
KAVRIN_API void* kavrin_object_context(kavrin_object* object);

/* ---- The host's user interface ---- */

typedef struct kavrin_host {
  void* context;
  /* Shows a modal message box (texts UTF-8) and answers the button pressed
   * (1 for OK); NULL answers OK without showing anything. */
  int32_t (*message_box)(void* context, const char* prompt, int32_t buttons, const char* title);
  /* The focused control of the active form as a new handle the library takes
   * over, or NULL when there is none (the caller then fails with 91). A NULL
   * callback has no focused control. */
  kavrin_object* (*active_control)(void* context);
  /* Called once when the host is replaced (may be NULL). */
  void (*release)(void* context);
} kavrin_host;

/* Installs `host` (copied) as the process's UI host; NULL restores the
 * default one, which has no focused control and writes message boxes to
 * stderr. */
KAVRIN_API int kavrin_set_host(const kavrin_host* host, kavrin_error** error);

#ifdef __cplusplus
}
#endif

#endif /* KAVRIN_KAVRIN_H */
