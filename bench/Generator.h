// Suite databases of a chosen size for the benchmark: an inventory archive of
// `items` items and the archives around it in proportion, the same rows for
// the same size on every run.
#pragma once

#include <cstdint>
#include <string>

namespace kavrin::bench {

// How many rows each archive gets for `items` inventory items.
struct SuiteSize {
  explicit SuiteSize(int64_t items);

  int64_t items;
  int64_t inventory_classes;  // leaves, under top classes of their own
  int64_t top_classes;
  int64_t vendors;
  int64_t vendor_classes;
  int64_t customers;
  int64_t customer_classes;
  int64_t warehouses;
  int64_t departments;
  int64_t persons;
  int64_t cost_objects;  // leaves, under top cost objects of their own
  int64_t top_cost_objects;
  int64_t head_settings;
};

// The codes and names the generator gives row `n` (from 1) of an archive.
std::string ItemCode(int64_t n);
std::string ItemName(int64_t n);
std::string ClassCode(const SuiteSize& size, int64_t n);
std::string WarehouseCode(int64_t n);
std::string DepartmentCode(int64_t n);
std::string CostObjectCode(const SuiteSize& size, int64_t n);
std::string CostObjectName(int64_t n);
std::string ItemUnit(int64_t n);
// The class an item belongs to.
int64_t ClassOfItem(const SuiteSize& size, int64_t item);
// The inventory head and difference head the head settings give an item of
// the second half of the archive in a warehouse, as "head/difference".
std::string HeadsOf(const SuiteSize& size, int64_t warehouse, int64_t item);

// The file name of the database for `items` items: it changes with the
// schema and the generator, so that a kept database is never a stale one.
std::string SuiteFileName(int64_t items);

// Creates a suite database at `path` (which must not exist) filled for
// `items` items, in one transaction, writing a progress line to stderr.
void GenerateSuite(const std::string& path, int64_t items);

}  // namespace kavrin::bench
