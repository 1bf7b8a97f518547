#include "Generator.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "db/sqlite/Dialect.h"
#include "kavrin/Schema.h"

namespace kavrin::schema {
extern const std::string_view kSuiteSql;
}  // namespace kavrin::schema

namespace kavrin::bench {

namespace {

// Raised whenever the generator makes other rows than before.
constexpr int kGeneratorVersion = 1;

template <typename... Numbers>
std::string Format(const char* pattern, Numbers... numbers) {
  const int length = std::snprintf(nullptr, 0, pattern, static_cast<long long>(numbers)...);
  std::string text(static_cast<size_t>(length), '\0');
  std::snprintf(text.data(), text.size() + 1, pattern, static_cast<long long>(numbers)...);
  return text;
}

// The same pseudo-random number for the same row on every machine.
uint64_t Mix(uint64_t x) {
  x += 0x9E3779B97F4A7C15ull;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
  return x ^ (x >> 31);
}

const char* const kUnits[] = {"个", "件", "千克", "米", "箱"};

uint64_t ItemRandom(int64_t n) {
  return Mix(static_cast<uint64_t>(n) + 7);
}

struct Null {};

// A value bound to an INSERT: Null, a whole number, a real or a text.
struct Value {
  enum class Kind { kNull, kInteger, kReal, kText } kind;
  int64_t integer = 0;
  double real = 0;
  std::string text;

  Value(Null) : kind(Kind::kNull) {}
  Value(int64_t v) : kind(Kind::kInteger), integer(v) {}
  Value(double v) : kind(Kind::kReal), real(v) {}
  Value(std::string v) : kind(Kind::kText), text(std::move(v)) {}
  Value(const char* v) : kind(Kind::kText), text(v) {}
};

[[noreturn]] void Fail(sqlite3* db, const std::string& what) {
  throw std::runtime_error(what + ": " + sqlite3_errmsg(db));
}

// One prepared INSERT, run once per row.
class Inserter {
 public:
  Inserter(sqlite3* db, const std::string& sql) : db_(db) {
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt_, nullptr) != SQLITE_OK) Fail(db, sql);
  }
  ~Inserter() { sqlite3_finalize(stmt_); }
  Inserter(const Inserter&) = delete;
  Inserter& operator=(const Inserter&) = delete;

  void Row(const std::vector<Value>& values) {
    for (size_t i = 0; i < values.size(); ++i) {
      const int at = static_cast<int>(i + 1);
      const Value& v = values[i];
      switch (v.kind) {
        case Value::Kind::kNull:
          sqlite3_bind_null(stmt_, at);
          break;
        case Value::Kind::kInteger:
          sqlite3_bind_int64(stmt_, at, v.integer);
          break;
        case Value::Kind::kReal:
          sqlite3_bind_double(stmt_, at, v.real);
          break;
        case Value::Kind::kText:
          sqlite3_bind_text(stmt_, at, v.text.data(), static_cast<int>(v.text.size()),
                            SQLITE_TRANSIENT);
          break;
      }
    }
    if (sqlite3_step(stmt_) != SQLITE_DONE) Fail(db_, "insert");
    sqlite3_reset(stmt_);
  }

 private:
  sqlite3* db_;
  sqlite3_stmt* stmt_ = nullptr;
};

// The progress line: which archive is being filled and how far along.
class Progress {
 public:
  explicit Progress(int64_t items) : items_(items) {}
  void Show(const char* archive, int64_t done, int64_t total) {
    if (done != total && done % 20000 != 0) return;
    std::fprintf(stderr, "\rgenerating %lld items: %-16s %9lld/%-9lld",
                 static_cast<long long>(items_), archive, static_cast<long long>(done),
                 static_cast<long long>(total));
    std::fflush(stderr);
  }
  ~Progress() { std::fprintf(stderr, "\n"); }

 private:
  int64_t items_;
};

void Exec(sqlite3* db, const std::string& sql) {
  char* message = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
    const std::string text = message ? message : "?";
    sqlite3_free(message);
    throw std::runtime_error(sql + ": " + text);
  }
}

}  // namespace

SuiteSize::SuiteSize(int64_t n)
    : items(n),
      inventory_classes(std::max<int64_t>(10, n / 100)),
      top_classes(std::min<int64_t>(99, std::max<int64_t>(2, n / 10000))),
      vendors(std::max<int64_t>(5, n / 20)),
      vendor_classes(std::max<int64_t>(5, n / 1000)),
      customers(std::max<int64_t>(5, n / 10)),
      customer_classes(std::max<int64_t>(5, n / 1000)),
      warehouses(std::max<int64_t>(4, n / 1000)),
      departments(std::max<int64_t>(2, n / 2000)),
      persons(std::max<int64_t>(5, n / 100)),
      cost_objects(std::max<int64_t>(10, n / 10)),
      top_cost_objects(std::min<int64_t>(99, std::max<int64_t>(2, n / 10000))),
      head_settings(std::max<int64_t>(10, n / 100)) {}

std::string ItemCode(int64_t n) {
  return Format("%07lld", n);
}
std::string ItemName(int64_t n) {
  return Format("物料%07lld", n);
}
std::string ClassCode(const SuiteSize& size, int64_t n) {
  return Format("%02lld%05lld", (n - 1) % size.top_classes + 1, n);
}
std::string WarehouseCode(int64_t n) {
  return Format("W%04lld", n);
}
std::string DepartmentCode(int64_t n) {
  return Format("D%04lld", n);
}
std::string CostObjectCode(const SuiteSize& size, int64_t n) {
  return Format("%02lld%06lld", (n - 1) % size.top_cost_objects + 1, n);
}
std::string CostObjectName(int64_t n) {
  return Format("成本对象%07lld", n);
}
std::string ItemUnit(int64_t n) {
  return kUnits[ItemRandom(n) % 5];
}
int64_t ClassOfItem(const SuiteSize& size, int64_t item) {
  return static_cast<int64_t>(Mix(static_cast<uint64_t>(item)) %
                              static_cast<uint64_t>(size.inventory_classes)) +
         1;
}

std::string SuiteFileName(int64_t items) {
  // FNV-1a: the same on every machine, unlike std::hash.
  uint64_t hash = 0xcbf29ce484222325ull;
  for (unsigned char c : schema::kSuiteSql) {
    hash ^= c;
    hash *= 0x100000001b3ull;
  }
  return Format("suite-%lld-v%lld-", items, kGeneratorVersion) +
         Format("%08llx", static_cast<int64_t>(hash & 0xFFFFFFFF)) + ".db";
}

std::string HeadsOf(const SuiteSize& size, int64_t warehouse, int64_t item) {
  // No single-item setting names an item of the second half, so the first
  // class setting of the warehouse whose top class the item's class is in
  // answers, else one for any warehouse, else the warehouse's first setting
  // without an item: a class setting, or its default.
  const int64_t top = (ClassOfItem(size, item) - 1) % size.top_classes + 1;
  bool class_settings = false;
  for (int64_t k = warehouse - 1; k < size.head_settings; k += size.warehouses) {
    if (k % 4 == 0) continue;
    if ((k / 4) % size.top_classes + 1 == top) return "140502/140402";
    class_settings = true;
  }
  if (top <= 5) return "140504/";
  return class_settings ? "140502/140402" : "1405/1404";
}

void GenerateSuite(const std::string& path, int64_t items) {
  if (std::filesystem::exists(path)) throw std::runtime_error(path + " exists already");
  CreateSuiteDatabase(FromUtf8("sqlite:" + path), false);
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
    sqlite3_close(db);
    throw std::runtime_error("cannot open " + path);
  }
  struct Closer {
    sqlite3* db;
    ~Closer() { sqlite3_close(db); }
  } closer{db};
  // The indexes compare under the server's collations.
  if (db::sqlite::RegisterDialect(db) != SQLITE_OK) Fail(db, "dialect");
  Exec(db, "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA cache_size=-262144;");
  Exec(db, "BEGIN");

  const SuiteSize size(items);
  Progress progress(items);
  const char* styles[] = {"先进先出法", "全月平均法", "移动平均法", "个别计价法"};

  {
    Inserter settings(db,
                      "INSERT INTO AccInformation (cSysID, cName, cCaption, cValue, cDefault) "
                      "VALUES (?, ?, ?, ?, ?)");
    const std::vector<std::vector<Value>> rows = {
        {"AA", "cGoodClass", "存货分类编码级次", "223", "223"},
        {"AA", "cProvClass", "供应商分类编码级次", "4", "4"},
        {"AA", "cCustClass", "客户分类编码级次", "4", "4"},
        {"AA", "cDepLevel", "部门编码级次", "5", "5"},
        {"AA", "cDispLevel", "收发类别编码级次", "12", "12"},
        {"AA", "cSettleLevel", "结算方式编码级次", "12", "12"},
        {"AA", "cGradeLevel", "科目编码级次", "4222", "4222"},
        {"AA", "cCostobj", "成本对象编码级次", "26", Null{}},
        {"IA", "dIAStartDate", "存货启用日期", "2026-01-01", Null{}},
        {"GL", "dGLStartDate", "总账启用日期", "2026-01-01", Null{}},
        {"IA", "cValueStyle", "核算方式", Null{}, "按仓库核算"},
    };
    for (const auto& row : rows)
      settings.Row(row);
  }

  {
    Inserter classes(db,
                     "INSERT INTO InventoryClass (cInvCCode, cInvCName, iInvCGrade, bInvCEnd) "
                     "VALUES (?, ?, ?, ?)");
    for (int64_t t = 1; t <= size.top_classes; ++t)
      classes.Row({Format("%02lld", t), Format("大类%02lld", t), int64_t{1}, int64_t{0}});
    for (int64_t n = 1; n <= size.inventory_classes; ++n) {
      classes.Row({ClassCode(size, n), Format("分类%05lld", n), int64_t{3}, int64_t{1}});
      progress.Show("InventoryClass", n, size.inventory_classes);
    }
  }

  {
    Inserter inventory(
        db,
        "INSERT INTO Inventory (cInvCode, cInvName, cInvStd, cInvCCode, cInvM_Unit, iInvRCost,"
        " bTrack, bSale, bPurchase, bSelf, bComsume, bFree1, bFree2, bFree3, bFree4, bFree5,"
        " bFree6, bFree7, bFree8, bFree9, bFree10)"
        " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    for (int64_t n = 1; n <= items; ++n) {
      const uint64_t r = ItemRandom(n);
      std::vector<Value> row = {ItemCode(n),
                                ItemName(n),
                                Format("规格%03lld", static_cast<int64_t>(r % 500)),
                                ClassCode(size, ClassOfItem(size, n)),
                                ItemUnit(n),
                                static_cast<double>(r % 1000000) / 100.0,
                                static_cast<int64_t>(r >> 8 & 1),
                                static_cast<int64_t>(r >> 9 & 1),
                                static_cast<int64_t>(r >> 10 & 1),
                                static_cast<int64_t>(r >> 11 & 1),
                                static_cast<int64_t>(r >> 12 & 1)};
      for (int free = 0; free < 10; ++free)
        row.push_back(static_cast<int64_t>(r >> (16 + free) & 1));
      inventory.Row(row);
      progress.Show("Inventory", n, items);
    }
  }

  {
    Inserter classes(db,
                     "INSERT INTO VendorClass (cVCCode, cVCName, iVCGrade, bVCEnd) "
                     "VALUES (?, ?, ?, ?)");
    for (int64_t n = 1; n <= size.vendor_classes; ++n)
      classes.Row({Format("%04lld", n), Format("供应商分类%04lld", n), int64_t{1}, int64_t{1}});
    Inserter vendors(db,
                     "INSERT INTO Vendor (cVenCode, cVenName, cVenAbbName, cVCCode) "
                     "VALUES (?, ?, ?, ?)");
    for (int64_t n = 1; n <= size.vendors; ++n) {
      vendors.Row({Format("V%06lld", n), Format("供应商%06lld有限公司", n),
                   Format("供应商%06lld", n), Format("%04lld", (n - 1) % size.vendor_classes + 1)});
      progress.Show("Vendor", n, size.vendors);
    }
  }

  {
    Inserter classes(db,
                     "INSERT INTO CustomerClass (cCCCode, cCCName, iCCGrade, bCCEnd) "
                     "VALUES (?, ?, ?, ?)");
    for (int64_t n = 1; n <= size.customer_classes; ++n)
      classes.Row({Format("%04lld", n), Format("客户分类%04lld", n), int64_t{1}, int64_t{1}});
    Inserter customers(db,
                       "INSERT INTO Customer (cCusCode, cCusName, cCusAbbName, cCCCode) "
                       "VALUES (?, ?, ?, ?)");
    for (int64_t n = 1; n <= size.customers; ++n) {
      customers.Row({Format("C%07lld", n), Format("客户%07lld有限公司", n), Format("客户%07lld", n),
                     Format("%04lld", (n - 1) % size.customer_classes + 1)});
      progress.Show("Customer", n, size.customers);
    }
  }

  {
    Inserter departments(db,
                         "INSERT INTO Department (cDepCode, cDepName, iDepGrade, bDepEnd) "
                         "VALUES (?, ?, ?, ?)");
    for (int64_t n = 1; n <= size.departments; ++n)
      departments.Row({DepartmentCode(n), Format("部门%04lld", n), int64_t{1}, int64_t{1}});
    // Each department's warehouses share one value style, so the binding
    // check walks every department.
    Inserter warehouses(db,
                        "INSERT INTO Warehouse (cWhCode, cWhName, cDepCode, cWhValueStyle, cMonth)"
                        " VALUES (?, ?, ?, ?, ?)");
    for (int64_t n = 1; n <= size.warehouses; ++n) {
      const int64_t department = (n - 1) % size.departments + 1;
      warehouses.Row({WarehouseCode(n), Format("仓库%04lld", n), DepartmentCode(department),
                      std::string(styles[department % 4]), std::string("202603")});
    }
    Inserter persons(db,
                     "INSERT INTO Person (cPersonCode, cPersonName, cDepCode) VALUES (?, ?, ?)");
    for (int64_t n = 1; n <= size.persons; ++n) {
      persons.Row({Format("P%06lld", n), Format("职员%06lld", n),
                   DepartmentCode((n - 1) % size.departments + 1)});
    }
  }

  {
    Inserter rd(db,
                "INSERT INTO Rd_Style (cRdCode, cRdName, bRdFlag, iRdGrade, bRdEnd) "
                "VALUES (?, ?, ?, ?, ?)");
    for (int64_t top = 1; top <= 2; ++top) {
      rd.Row({Format("%lld", top), Format("收发%lld", top), int64_t{top == 1}, int64_t{1},
              int64_t{0}});
      for (int64_t n = 1; n <= 9; ++n) {
        rd.Row({Format("%lld%lld", top, n), Format("收发类别%lld%lld", top, n), int64_t{top == 1},
                int64_t{2}, int64_t{1}});
      }
    }
    Inserter settle(db,
                    "INSERT INTO SettleStyle (cSSCode, cSSName, iSSGrade, bSSEnd) "
                    "VALUES (?, ?, ?, ?)");
    for (int64_t n = 1; n <= 9; ++n)
      settle.Row({Format("%lld", n), Format("结算方式%lld", n), int64_t{1}, int64_t{1}});
    Inserter codes(db, "INSERT INTO Code (cCode, cCode_Name, iGrade, bEnd) VALUES (?, ?, ?, ?)");
    for (int64_t n = 1; n <= 500; ++n)
      codes.Row(
          {Format("%04lld", 1000 + n), Format("科目%04lld", 1000 + n), int64_t{1}, int64_t{1}});
  }

  {
    Inserter costs(db, "INSERT INTO CostObj (cCode, cName, iGrade, bEnd) VALUES (?, ?, ?, ?)");
    for (int64_t t = 1; t <= size.top_cost_objects; ++t)
      costs.Row({Format("%02lld", t), Format("成本大类%02lld", t), int64_t{1}, int64_t{0}});
    for (int64_t n = 1; n <= size.cost_objects; ++n) {
      costs.Row({CostObjectCode(size, n), CostObjectName(n), int64_t{2}, int64_t{1}});
      progress.Show("CostObj", n, size.cost_objects);
    }
  }

  {
    const char* others[] = {
        "INSERT INTO Bank (cBCode, cBName) VALUES ('01', '工商银行'), ('02', "
        "'招商银行')",
        "INSERT INTO ForeignCurrency (cExchCode, cExchName) VALUES ('USD', "
        "'美元'), ('EUR', '欧元')",
        "INSERT INTO ExpenseItem (cExpCode, cExpName) VALUES ('01', "
        "'运输费'), ('02', '装卸费')",
        "INSERT INTO EcoClass (cEcoCode, cEcoName) VALUES ('01', '材料费'), "
        "('02', '人工费')"};
    for (const char* sql : others)
      Exec(db, sql);
    for (int period = 1; period <= 12; ++period) {
      const int closed = period <= 2 ? 1 : 0;
      Exec(db, Format("INSERT INTO GL_mEnd (iPeriod, bFlag, bFlag_IA, bFlag_PU, bFlag_SA, "
                      "bFlag_ST, bFlag_FA, bFlag_AP, bFlag_AR) VALUES (%lld, %lld, 1, 1, 1, 1, "
                      "1, 1, 1)",
                      period, closed));
    }
  }

  {
    // Head settings: per warehouse, some for single items of the first half
    // of the archive and the rest for top classes; a default per warehouse;
    // a few for any warehouse.
    Inserter heads(db,
                   "INSERT INTO IA_HeadSet (cWhCode, cInvCode, cInvCCode, cInvHead, cDifHead) "
                   "VALUES (?, ?, ?, ?, ?)");
    for (int64_t k = 0; k < size.head_settings; ++k) {
      const std::string warehouse = WarehouseCode(k % size.warehouses + 1);
      if (k % 4 == 0) {
        const int64_t item = static_cast<int64_t>(
            Mix(static_cast<uint64_t>(k)) % static_cast<uint64_t>(std::max<int64_t>(1, items / 2)));
        heads.Row(
            {warehouse, ItemCode(item + 1), Null{}, std::string("140501"), std::string("140401")});
      } else {
        heads.Row({warehouse, Null{}, Format("%02lld", (k / 4) % size.top_classes + 1),
                   std::string("140502"), std::string("140402")});
      }
      progress.Show("IA_HeadSet", k + 1, size.head_settings);
    }
    for (int64_t n = 1; n <= size.warehouses; ++n)
      heads.Row({WarehouseCode(n), Null{}, Null{}, std::string("1405"), std::string("1404")});
    for (int64_t n = 1; n <= 3; ++n)
      heads.Row({Null{}, ItemCode(n), Null{}, std::string("140503"), std::string("140403")});
    for (int64_t t = 1; t <= 5; ++t)
      heads.Row({Null{}, Null{}, Format("%02lld", t), std::string("140504"), Null{}});
  }

  Exec(db, "COMMIT");
}

}  // namespace kavrin::bench
