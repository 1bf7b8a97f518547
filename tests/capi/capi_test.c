/* The C interface from C: a form's calls on the demo company, by-reference
 * writes, errors with their numbers, objects by handle, and a list control,
 * a text box and message boxes implemented by the caller.
 *
 *   kavrin_capi_test DEMO_DB
 */
#include <kavrin/kavrin.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failures = 0;

#define CHECK(cond)                                                            \
  do {                                                                         \
    if (!(cond)) {                                                             \
      fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
      ++failures;                                                              \
    }                                                                          \
  } while (0)

static kavrin_value Text(const char* text) {
  kavrin_value v = KAVRIN_VALUE_INIT;
  v.kind = KAVRIN_STRING;
  v.u.utf8.data = text;
  v.u.utf8.length = strlen(text);
  return v;
}

static kavrin_value Number(int32_t kind, int32_t i) {
  kavrin_value v = KAVRIN_VALUE_INIT;
  v.kind = kind;
  v.u.i = i;
  return v;
}

static kavrin_value Object(kavrin_object* object) {
  kavrin_value v = KAVRIN_VALUE_INIT;
  v.kind = KAVRIN_OBJECT;
  v.u.object = object;
  return v;
}

static int IsText(const kavrin_value* v, const char* text) {
  return v->kind == KAVRIN_STRING && v->u.utf8.length == strlen(text) &&
         memcmp(v->u.utf8.data, text, v->u.utf8.length) == 0;
}

/* Calls a method; answers the error number (0 for success). */
static int32_t Call(kavrin_object* object, const char* name, kavrin_value* args, size_t count,
                    kavrin_value* result) {
  kavrin_error* error = NULL;
  if (kavrin_invoke(object, name, KAVRIN_METHOD, args, count, result, 0, &error) == 0) return 0;
  int32_t number = kavrin_error_number(error);
  kavrin_error_free(error);
  return number ? number : -1;
}

/* ---- A list control and a text box of the caller's own ---- */

struct Control {
  char items[8][64];
  int count;
  int released;
  int32_t sel_start, sel_length;
  const char* text;
};

static int ListInvoke(void* context, const char* name, int32_t kind, kavrin_value* args,
                      size_t count, kavrin_value* result, kavrin_error** error) {
  struct Control* list = context;
  (void)kind;
  (void)result;
  if (strcmp(name, "Clear") == 0 && count == 0) {
    list->count = 0;
    return 0;
  }
  if (strcmp(name, "AddItem") == 0 && count == 1 && args[0].kind == KAVRIN_STRING &&
      list->count < 8 && args[0].u.utf8.length < 64) {
    memcpy(list->items[list->count], args[0].u.utf8.data, args[0].u.utf8.length);
    list->items[list->count][args[0].u.utf8.length] = 0;
    ++list->count;
    return 0;
  }
  *error = kavrin_error_new(438, "ListBox", NULL);
  return 1;
}

static int TextBoxInvoke(void* context, const char* name, int32_t kind, kavrin_value* args,
                         size_t count, kavrin_value* result, kavrin_error** error) {
  struct Control* box = context;
  (void)error;
  if (kind == KAVRIN_PROPERTY_GET && strcmp(name, "Text") == 0) {
    *result = Text(box->text);
    return 0;
  }
  if (kind == KAVRIN_PROPERTY_PUT && count == 1 && args[0].kind == KAVRIN_INTEGER) {
    if (strcmp(name, "SelStart") == 0) box->sel_start = args[0].u.i;
    if (strcmp(name, "SelLength") == 0) box->sel_length = args[0].u.i;
    return 0;
  }
  return 1; /* no error given: Automation error */
}

static void Released(void* context) {
  ((struct Control*)context)->released++;
}

struct Host {
  kavrin_object* focused;
  char last_prompt[256];
  int boxes;
};

static int32_t MessageBox(void* context, const char* prompt, int32_t buttons, const char* title) {
  struct Host* host = context;
  (void)buttons;
  (void)title;
  snprintf(host->last_prompt, sizeof host->last_prompt, "%s", prompt);
  host->boxes++;
  return 1;
}

static kavrin_object* Focused(void* context) {
  struct Host* host = context;
  return kavrin_object_retain(host->focused);
}

/* ---- The cases ---- */

static void FormCalls(kavrin_object* pub) {
  kavrin_value args[3] = {Text("010101"), Number(KAVRIN_INTEGER, 0)};
  kavrin_value result = KAVRIN_VALUE_INIT;
  CHECK(Call(pub, "checkdirnograde", args, 2, &result) == 0);
  CHECK(IsText(&result, "010101"));
  kavrin_value_clear(&result);
  CHECK(result.kind == KAVRIN_EMPTY && result.owned_ == NULL);

  /* A name typed instead of the code, answered as UTF-16. */
  args[0] = Text("刨花板 18mm");
  args[2] = Number(KAVRIN_BOOLEAN, 0);
  CHECK(kavrin_invoke(pub, "CheckDirNoGrade", KAVRIN_METHOD, args, 3, &result, KAVRIN_ANSWER_UTF16,
                      NULL) == 0);
  CHECK(result.kind == KAVRIN_STRING16 && result.u.utf16.length == 6 &&
        result.u.utf16.data[0] == '0' && result.u.utf16.data[5] == '1');
  kavrin_value_clear(&result);

  /* Coercion is the component's: a text "0" serves the Integer parameter. */
  kavrin_value price[1] = {Text("010101")};
  CHECK(Call(pub, "InvCodeToUnitPrice", price, 1, &result) == 0);
  CHECK(result.kind == KAVRIN_DOUBLE && result.u.d == 86.5);
  kavrin_value by_text[2] = {Text("010101"), Text("0")};
  CHECK(Call(pub, "CodeToName", by_text, 2, &result) == 0);
  CHECK(IsText(&result, "刨花板 18mm"));
  kavrin_value_clear(&result);

  CHECK(Call(pub, "SubMaxKeepDate", NULL, 0, &result) == 0);
  CHECK(result.kind == KAVRIN_DATE && result.u.d == 46112.0); /* 31 March 2026 */
  CHECK(Call(pub, "CurPeriod", NULL, 0, &result) == 0);
  CHECK(result.kind != KAVRIN_STRING);
  kavrin_value_clear(&result);
}

static void Errors(kavrin_object* pub) {
  kavrin_error* error = NULL;
  kavrin_value args[3] = {Text("A'A"), Text("x")};
  kavrin_value result = KAVRIN_VALUE_INIT;
  CHECK(kavrin_invoke(pub, "GetAccInfo", KAVRIN_METHOD, args, 2, &result, 0, &error) == 1);
  CHECK(kavrin_error_number(error) == -2147217900);
  CHECK(kavrin_error_description(error)[0] != 0 && kavrin_error_source(error)[0] != 0);
  CHECK(kavrin_error_description16(error)[0] != 0);
  kavrin_error_free(error);
  CHECK(result.kind == KAVRIN_EMPTY); /* left unset */

  CHECK(Call(pub, "NoSuchMember", NULL, 0, NULL) == 438);
  CHECK(Call(pub, "CheckDirNoGrade", args, 1, NULL) == 449);
  kavrin_value many[4] = {Text("a"), Text("b"), Text("c"), Text("d")};
  CHECK(Call(pub, "CheckInv", many, 4, NULL) == 450);
  kavrin_value typed[2] = {Text("010101"), Text("zero")};
  CHECK(Call(pub, "CheckDirNoGrade", typed, 2, NULL) == 13);
  kavrin_value overflow[2] = {Text("010101"), Number(KAVRIN_INTEGER, 40000)};
  CHECK(Call(pub, "CheckDirNoGrade", overflow, 2, NULL) == 6);
  kavrin_value unknown[2] = {Text("010101"), Number(99, 0)};
  CHECK(Call(pub, "CheckDirNoGrade", unknown, 2, NULL) == 13);
  kavrin_value null_text[1] = {Text("")};
  null_text[0].u.utf8.length = 3; /* a length without data */
  null_text[0].u.utf8.data = NULL;
  CHECK(Call(pub, "CheckInv", null_text, 1, NULL) == 5);

  /* Misuse is an error too, never a crash. */
  CHECK(Call(NULL, "CheckInv", NULL, 0, NULL) == 91);
  CHECK(Call(pub, NULL, NULL, 0, NULL) == 5);
  CHECK(kavrin_invoke(pub, "CheckInv", 7, NULL, 0, NULL, 0, NULL) == 1);
  kavrin_object* none = NULL;
  CHECK(kavrin_open("/nonexistent/dir/none.db", &none, &error) == 1 && none == NULL);
  CHECK(kavrin_error_number(error) != 0);
  kavrin_error_free(error);
  CHECK(kavrin_create_object("Other.Thing", &none, &error) == 1);
  CHECK(kavrin_error_number(error) == 429);
  kavrin_error_free(error);
  kavrin_error* own = kavrin_error_new(3021, NULL, NULL);
  CHECK(strncmp(kavrin_error_description(own), "Either BOF", 10) == 0);
  kavrin_error_free(own);
}

static void WrittenArguments(kavrin_object* pub) {
  /* SepCode answers the code and rewrites the entry. */
  kavrin_value entry[1] = {Text("01             原料库")};
  kavrin_value result = KAVRIN_VALUE_INIT;
  CHECK(Call(pub, "SepCode", entry, 1, &result) == 0);
  CHECK(IsText(&result, "01"));
  CHECK(IsText(&entry[0], " 01             原料库") && entry[0].owned_ != NULL);
  kavrin_value_clear(&result);
  kavrin_value_clear(&entry[0]);

  /* Two Booleans written; the code, not written, keeps the caller's pointer. */
  const char* code = "010102";
  kavrin_value free_items[3] = {Text(code), Number(KAVRIN_BOOLEAN, 0), Number(KAVRIN_BOOLEAN, 0)};
  CHECK(Call(pub, "GetInvUseFree", free_items, 3, NULL) == 0);
  CHECK(free_items[0].u.utf8.data == code && free_items[0].owned_ == NULL);
  CHECK(free_items[1].kind == KAVRIN_BOOLEAN && free_items[1].u.i == -1);
  CHECK(free_items[2].kind == KAVRIN_BOOLEAN && free_items[2].u.i == -1);

  /* The array of ten free items comes back with the stored switches. */
  kavrin_value slots[10];
  for (int i = 0; i < 10; ++i)
    slots[i] = Number(KAVRIN_BOOLEAN, 0);
  kavrin_value array = KAVRIN_VALUE_INIT;
  array.kind = KAVRIN_ARRAY;
  array.element_kind = KAVRIN_BOOLEAN;
  array.u.array.items = slots;
  array.u.array.count = 10;
  kavrin_value new_free[2] = {Text("020101"), array};
  CHECK(Call(pub, "GetInvUseFreeNew", new_free, 2, NULL) == 0);
  CHECK(new_free[1].kind == KAVRIN_ARRAY && new_free[1].u.array.count == 10);
  CHECK(new_free[1].u.array.items[0].u.i == -1 && new_free[1].u.array.items[2].u.i == 0 &&
        new_free[1].u.array.items[9].u.i == -1);
  CHECK(slots[0].u.i == 0); /* the caller's own items are not touched */
  kavrin_value_clear(&new_free[1]);

  /* An array too short for the ten items fails with 9, keeping what was stored. */
  array.u.array.count = 3;
  kavrin_value short_free[2] = {Text("020101"), array};
  CHECK(Call(pub, "GetInvUseFreeNew", short_free, 2, NULL) == 9);
  CHECK(short_free[1].kind == KAVRIN_ARRAY && short_free[1].u.array.items[0].u.i == -1);
  kavrin_value_clear(&short_free[1]);
}

static void Objects(kavrin_object* pub, const char* path) {
  /* DBIA read as an object, reassigned by reference. */
  kavrin_value dbia = KAVRIN_VALUE_INIT;
  CHECK(kavrin_invoke(pub, "DBIA", KAVRIN_PROPERTY_GET, NULL, 0, &dbia, 0, NULL) == 0);
  CHECK(dbia.kind == KAVRIN_OBJECT && dbia.u.object != NULL);
  kavrin_value name = KAVRIN_VALUE_INIT;
  CHECK(kavrin_object_type_name(dbia.u.object, &name, NULL) == 0 && IsText(&name, "KitDatabase"));
  kavrin_value_clear(&name);
  kavrin_object* kept = kavrin_object_retain(dbia.u.object);
  kavrin_value_clear(&dbia);

  kavrin_object* other = NULL;
  CHECK(kavrin_create_object("kavrin.CLSPUB", &other, NULL) == 0);
  kavrin_value put[1] = {Object(kept)};
  CHECK(kavrin_invoke(other, "DBIA", KAVRIN_PROPERTY_PUT_REF, put, 1, NULL, 0, NULL) == 0);
  kavrin_object_release(kept); /* the other clsPub holds the database now */
  kavrin_value args[2] = {Text("V001"), Number(KAVRIN_INTEGER, 1)};
  kavrin_value result = KAVRIN_VALUE_INIT;
  CHECK(Call(other, "CheckDirNoGrade", args, 2, &result) == 0 && IsText(&result, "V001"));
  kavrin_value_clear(&result);
  kavrin_object_release(other);

  /* A desktop database for ExistTableQueryDAO. */
  kavrin_object* desktop = NULL;
  CHECK(kavrin_open_dao(path, &desktop, NULL) == 0);
  kavrin_value probe[2] = {Object(desktop), Text("inventory")};
  CHECK(Call(pub, "ExistTableQueryDAO", probe, 2, &result) == 0);
  CHECK(result.kind == KAVRIN_BOOLEAN && result.u.i == -1);
  probe[1] = Text("NoSuchTable");
  CHECK(Call(pub, "ExistTableQueryDAO", probe, 2, &result) == 0 && result.u.i == 0);
  /* A database of the wrong class for DBIA. */
  kavrin_value wrong[1] = {Object(desktop)};
  kavrin_error* error = NULL;
  CHECK(kavrin_invoke(pub, "DBIA", KAVRIN_PROPERTY_PUT_REF, wrong, 1, NULL, 0, &error) == 1);
  CHECK(kavrin_error_number(error) == 13);
  kavrin_error_free(error);
  kavrin_object_release(desktop);
}

static void CallerObjects(kavrin_object* pub) {
  struct Control list = {0};
  kavrin_object* handle = kavrin_object_new("ListBox", ListInvoke, Released, &list);
  CHECK(kavrin_object_context(handle) == &list && kavrin_object_context(pub) == NULL);
  kavrin_value args[2] = {Object(handle), Text("01")};
  CHECK(Call(pub, "FillCboCK", args, 2, NULL) == 0);
  CHECK(list.count == 1 && strcmp(list.items[0], "01             原料库") == 0);
  CHECK(Call(pub, "FillCboCK", args, 1, NULL) == 0 && list.count == 3);
  kavrin_object_release(handle);
  CHECK(list.released == 1);
  CHECK(kavrin_object_new("X", NULL, NULL, NULL) == NULL);

  /* A failure of the caller's object reaches the caller: without an error of
   * its own it is an automation error. */
  struct Control broken = {0};
  kavrin_object* no_items = kavrin_object_new("ListBox", TextBoxInvoke, Released, &broken);
  kavrin_value cbo[1] = {Object(no_items)};
  CHECK(Call(pub, "FillCboCK", cbo, 1, NULL) == 440);

  /* The host: a message box for an unknown item, the focused text box. */
  struct Control box = {0};
  box.text = "刨花板";
  struct Host host = {0};
  host.focused = kavrin_object_new("TextBox", TextBoxInvoke, Released, &box);
  kavrin_host callbacks = {&host, MessageBox, Focused, NULL};
  CHECK(kavrin_set_host(&callbacks, NULL) == 0);
  kavrin_value torf[2] = {Text("999999"), Text("bTrack")};
  kavrin_value result = KAVRIN_VALUE_INIT;
  CHECK(Call(pub, "InvCodeIsTorF", torf, 2, &result) == 0 && result.u.i == 0);
  CHECK(host.boxes == 1 && strcmp(host.last_prompt, "该存货没有找到！") == 0);
  CHECK(Call(pub, "TextSelected", NULL, 0, NULL) == 0);
  CHECK(box.sel_start == 0 && box.sel_length == 3);
  kavrin_object_release(host.focused);
  host.focused = no_items; /* not a TextBox: left alone */
  CHECK(Call(pub, "TextSelected", NULL, 0, NULL) == 0 && broken.sel_length == 0);
  host.focused = NULL;
  CHECK(Call(pub, "TextSelected", NULL, 0, NULL) == 91);
  CHECK(kavrin_set_host(NULL, NULL) == 0);
  kavrin_object_release(no_items);
  CHECK(box.released == 1 && broken.released == 1);
}

static void MemberTable(void) {
  CHECK(kavrin_member_count() == 40); /* 38 members, DBIA as read and as assignment */
  kavrin_member member;
  int found = 0;
  for (size_t i = 0; i < kavrin_member_count(); ++i) {
    CHECK(kavrin_member_info(i, &member) == 0);
    if (strcmp(member.name, "GetInvDifHead") != 0) continue;
    found = 1;
    CHECK(member.result_kind == KAVRIN_EMPTY && member.parameter_count == 5);
    kavrin_parameter parameter;
    CHECK(kavrin_parameter_info(i, 3, &parameter) == 0);
    CHECK(strcmp(parameter.name, "strHeadCode") == 0 && parameter.kind == KAVRIN_STRING &&
          parameter.optional && parameter.written);
    CHECK(kavrin_parameter_info(i, 5, &parameter) == 1);
  }
  CHECK(found);
  CHECK(kavrin_member_info(40, &member) == 1);
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: kavrin_capi_test DEMO_DB\n");
    return 2;
  }
  CHECK(strcmp(kavrin_version(), "") != 0);
  kavrin_object* pub = NULL;
  kavrin_error* error = NULL;
  if (kavrin_open(argv[1], &pub, &error) != 0) {
    fprintf(stderr, "cannot open %s: %s\n", argv[1], kavrin_error_description(error));
    kavrin_error_free(error);
    return 1;
  }
  FormCalls(pub);
  Errors(pub);
  WrittenArguments(pub);
  Objects(pub, argv[1]);
  CallerObjects(pub);
  MemberTable();
  kavrin_object_release(pub);
  printf("%d checks failed\n", failures);
  return failures == 0 ? 0 : 1;
}
