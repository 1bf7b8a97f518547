-- The suite's tables that clsPub reads, with the server's types and
-- collations. Text columns compare as the suite's server does: without regard
-- to letter case and ignoring trailing blanks (Chinese_PRC_CI_AS).

CREATE TABLE AccInformation (
  cSysID    VARCHAR(2)   COLLATE Chinese_PRC_CI_AS NOT NULL,
  cName     VARCHAR(50)  COLLATE Chinese_PRC_CI_AS NOT NULL,
  cCaption  NVARCHAR(100) COLLATE Chinese_PRC_CI_AS,
  cValue    NVARCHAR(100) COLLATE Chinese_PRC_CI_AS,
  cDefault  NVARCHAR(100) COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE Inventory (
  cInvCode    VARCHAR(20)  COLLATE Chinese_PRC_CI_AS NOT NULL,
  cInvName    NVARCHAR(60) COLLATE Chinese_PRC_CI_AS,
  cInvStd     NVARCHAR(60) COLLATE Chinese_PRC_CI_AS,
  cInvCCode   VARCHAR(12)  COLLATE Chinese_PRC_CI_AS,
  cInvM_Unit  NVARCHAR(10) COLLATE Chinese_PRC_CI_AS,
  iInvRCost   FLOAT,
  bTrack      BIT,
  bSale       BIT,
  bPurchase   BIT,
  bSelf       BIT,
  bComsume    BIT,
  bFree1 BIT, bFree2 BIT, bFree3 BIT, bFree4 BIT, bFree5 BIT,
  bFree6 BIT, bFree7 BIT, bFree8 BIT, bFree9 BIT, bFree10 BIT
);

CREATE TABLE InventoryClass (
  cInvCCode  VARCHAR(12)  COLLATE Chinese_PRC_CI_AS NOT NULL,
  cInvCName  NVARCHAR(40) COLLATE Chinese_PRC_CI_AS,
  iInvCGrade SMALLINT,
  bInvCEnd   BIT
);

CREATE TABLE Vendor (
  cVenCode    VARCHAR(20)   COLLATE Chinese_PRC_CI_AS NOT NULL,
  cVenName    NVARCHAR(98)  COLLATE Chinese_PRC_CI_AS,
  cVenAbbName NVARCHAR(60)  COLLATE Chinese_PRC_CI_AS,
  cVCCode     VARCHAR(12)   COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE VendorClass (
  cVCCode  VARCHAR(12)  COLLATE Chinese_PRC_CI_AS NOT NULL,
  cVCName  NVARCHAR(40) COLLATE Chinese_PRC_CI_AS,
  iVCGrade SMALLINT,
  bVCEnd   BIT
);

CREATE TABLE Customer (
  cCusCode    VARCHAR(20)  COLLATE Chinese_PRC_CI_AS NOT NULL,
  cCusName    NVARCHAR(98) COLLATE Chinese_PRC_CI_AS,
  cCusAbbName NVARCHAR(60) COLLATE Chinese_PRC_CI_AS,
  cCCCode     VARCHAR(12)  COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE CustomerClass (
  cCCCode  VARCHAR(12)  COLLATE Chinese_PRC_CI_AS NOT NULL,
  cCCName  NVARCHAR(40) COLLATE Chinese_PRC_CI_AS,
  iCCGrade SMALLINT,
  bCCEnd   BIT
);

CREATE TABLE Department (
  cDepCode  VARCHAR(12)  COLLATE Chinese_PRC_CI_AS NOT NULL,
  cDepName  NVARCHAR(40) COLLATE Chinese_PRC_CI_AS,
  iDepGrade SMALLINT,
  bDepEnd   BIT
);

CREATE TABLE Warehouse (
  cWhCode       VARCHAR(20)  COLLATE Chinese_PRC_CI_AS NOT NULL,
  cWhName       NVARCHAR(40) COLLATE Chinese_PRC_CI_AS,
  cDepCode      VARCHAR(12)  COLLATE Chinese_PRC_CI_AS,
  cWhValueStyle NVARCHAR(20) COLLATE Chinese_PRC_CI_AS,
  cMonth        VARCHAR(10)  COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE Person (
  cPersonCode VARCHAR(20)  COLLATE Chinese_PRC_CI_AS NOT NULL,
  cPersonName NVARCHAR(40) COLLATE Chinese_PRC_CI_AS,
  cDepCode    VARCHAR(12)  COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE Rd_Style (
  cRdCode  VARCHAR(5)   COLLATE Chinese_PRC_CI_AS NOT NULL,
  cRdName  NVARCHAR(20) COLLATE Chinese_PRC_CI_AS,
  bRdFlag  BIT,
  iRdGrade SMALLINT,
  bRdEnd   BIT
);

CREATE TABLE SettleStyle (
  cSSCode  VARCHAR(3)   COLLATE Chinese_PRC_CI_AS NOT NULL,
  cSSName  NVARCHAR(20) COLLATE Chinese_PRC_CI_AS,
  iSSGrade SMALLINT,
  bSSEnd   BIT
);

CREATE TABLE Code (
  cCode      VARCHAR(15)  COLLATE Chinese_PRC_CI_AS NOT NULL,
  cCode_Name NVARCHAR(40) COLLATE Chinese_PRC_CI_AS,
  iGrade     SMALLINT,
  bEnd       BIT
);

CREATE TABLE CostObj (
  cCode  VARCHAR(20)  COLLATE Chinese_PRC_CI_AS NOT NULL,
  cName  NVARCHAR(40) COLLATE Chinese_PRC_CI_AS,
  iGrade SMALLINT,
  bEnd   BIT
);

CREATE TABLE Bank (
  cBCode VARCHAR(5)   COLLATE Chinese_PRC_CI_AS NOT NULL,
  cBName NVARCHAR(30) COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE ForeignCurrency (
  cExchCode VARCHAR(8)   COLLATE Chinese_PRC_CI_AS NOT NULL,
  cExchName NVARCHAR(8)  COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE ExpenseItem (
  cExpCode VARCHAR(6)   COLLATE Chinese_PRC_CI_AS NOT NULL,
  cExpName NVARCHAR(30) COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE EcoClass (
  cEcoCode VARCHAR(6)   COLLATE Chinese_PRC_CI_AS NOT NULL,
  cEcoName NVARCHAR(30) COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE IA_HeadSet (
  AutoID    INTEGER PRIMARY KEY,
  cWhCode   VARCHAR(20) COLLATE Chinese_PRC_CI_AS,
  cInvCode  VARCHAR(20) COLLATE Chinese_PRC_CI_AS,
  cInvCCode VARCHAR(12) COLLATE Chinese_PRC_CI_AS,
  cInvHead  VARCHAR(15) COLLATE Chinese_PRC_CI_AS,
  cDifHead  VARCHAR(15) COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE GL_mEnd (
  iPeriod  TINYINT NOT NULL,
  bFlag    BIT,
  bFlag_IA BIT,
  bFlag_PU BIT,
  bFlag_SA BIT,
  bFlag_ST BIT,
  bFlag_FA BIT,
  bFlag_AP BIT,
  bFlag_AR BIT
);

CREATE TABLE IA_Subsidiary (
  AutoID    INTEGER PRIMARY KEY,
  JustID    INT,
  cInvCode  VARCHAR(20) COLLATE Chinese_PRC_CI_AS,
  cWhCode   VARCHAR(20) COLLATE Chinese_PRC_CI_AS,
  cBusType  NVARCHAR(12) COLLATE Chinese_PRC_CI_AS,
  dKeepDate DATETIME
);

CREATE TABLE JustInVouchs (
  AutoID   INTEGER PRIMARY KEY,
  cJVCode  VARCHAR(10) COLLATE Chinese_PRC_CI_AS,
  cInvCode VARCHAR(20) COLLATE Chinese_PRC_CI_AS,
  CorID    INT
);

CREATE TABLE RdRecord (
  ID       INTEGER PRIMARY KEY,
  cCode    VARCHAR(10)  COLLATE Chinese_PRC_CI_AS,
  cBusType NVARCHAR(12) COLLATE Chinese_PRC_CI_AS,
  dDate    DATETIME
);

CREATE TABLE RdRecords (
  AutoID   INTEGER PRIMARY KEY,
  ID       INT,
  cInvCode VARCHAR(20) COLLATE Chinese_PRC_CI_AS,
  iQuantity FLOAT
);
