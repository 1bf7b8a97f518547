-- Indexes on the archives' codes and names, on the warehouses' departments
-- and on the head settings' warehouses, the same on every engine: every entry
-- check looks a typed text up as a code, then as a name, by equality. An index
-- takes its column's collation, so it serves the same case-insensitive
-- comparison the lookups make (on PostgreSQL a B-tree orders and finds texts
-- under a nondeterministic collation too). They are not unique: the archives
-- accept whatever codes the suite has stored. The warehouses' departments are
-- indexed only where a warehouse has one, so that the list of distinct
-- departments is still read from the table itself, in the order of its rows.
CREATE INDEX IX_Inventory_cInvCode ON Inventory (cInvCode);
CREATE INDEX IX_Inventory_cInvName ON Inventory (cInvName);
CREATE INDEX IX_InventoryClass_cInvCCode ON InventoryClass (cInvCCode);
CREATE INDEX IX_InventoryClass_cInvCName ON InventoryClass (cInvCName);
CREATE INDEX IX_Vendor_cVenCode ON Vendor (cVenCode);
CREATE INDEX IX_Vendor_cVenAbbName ON Vendor (cVenAbbName);
CREATE INDEX IX_VendorClass_cVCCode ON VendorClass (cVCCode);
CREATE INDEX IX_VendorClass_cVCName ON VendorClass (cVCName);
CREATE INDEX IX_Customer_cCusCode ON Customer (cCusCode);
CREATE INDEX IX_CustomerClass_cCCCode ON CustomerClass (cCCCode);
CREATE INDEX IX_CustomerClass_cCCName ON CustomerClass (cCCName);
CREATE INDEX IX_Department_cDepCode ON Department (cDepCode);
CREATE INDEX IX_Department_cDepName ON Department (cDepName);
CREATE INDEX IX_Warehouse_cWhCode ON Warehouse (cWhCode);
CREATE INDEX IX_Warehouse_cWhName ON Warehouse (cWhName);
CREATE INDEX IX_Warehouse_cDepCode ON Warehouse (cDepCode) WHERE cDepCode IS NOT NULL;
CREATE INDEX IX_Person_cPersonCode ON Person (cPersonCode);
CREATE INDEX IX_Person_cPersonName ON Person (cPersonName);
CREATE INDEX IX_Rd_Style_cRdCode ON Rd_Style (cRdCode);
CREATE INDEX IX_Rd_Style_cRdName ON Rd_Style (cRdName);
CREATE INDEX IX_SettleStyle_cSSCode ON SettleStyle (cSSCode);
CREATE INDEX IX_SettleStyle_cSSName ON SettleStyle (cSSName);
CREATE INDEX IX_Code_cCode ON Code (cCode);
CREATE INDEX IX_Code_cCode_Name ON Code (cCode_Name);
CREATE INDEX IX_CostObj_cCode ON CostObj (cCode);
CREATE INDEX IX_CostObj_cName ON CostObj (cName);
CREATE INDEX IX_Bank_cBCode ON Bank (cBCode);
CREATE INDEX IX_ForeignCurrency_cExchCode ON ForeignCurrency (cExchCode);
CREATE INDEX IX_ExpenseItem_cExpCode ON ExpenseItem (cExpCode);
CREATE INDEX IX_EcoClass_cEcoCode ON EcoClass (cEcoCode);
CREATE INDEX IX_AccInformation_cSysID_cName ON AccInformation (cSysID, cName);
CREATE INDEX IX_IA_HeadSet_cWhCode ON IA_HeadSet (cWhCode);
