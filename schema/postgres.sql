-- The suite's tables that clsPub reads, for a PostgreSQL server, set up so
-- that the component's SQL runs unchanged and compares as the suite's own
-- server does:
--
-- * Names. Unquoted names fold to lower case, so GL_mEnd and gl_mend are the
--   same table, as on the suite's server.
-- * Texts. Character columns are bpchar without a length (stored as given,
--   trailing blanks insignificant in comparisons) under the collation
--   Chinese_PRC_CI_AS, an ICU collation at secondary strength: letter case,
--   width and kana type are ignored, accents count; Latin sorts before Han,
--   Han by pinyin. 'a1  ' equals 'A1'; ' a1' does not.
-- * Bits. BIT columns are booleans that accept 0 and 1 when written, and
--   compare with the numbers 0 and 1 (bRdEnd=1) through the operators below.
-- * Functions. len() ignores trailing blanks; right(), left() and
--   substring() keep the blanks of a column's value and its collation.
-- * Row ids. An AutoID or ID left out of an INSERT gets the largest one so
--   far plus one.
--
-- Setting up needs a superuser: 0 and 1 are written into bit columns through
-- the server's own integer-to-boolean cast, made an assignment cast here.

CREATE COLLATION Chinese_PRC_CI_AS (
  provider = icu, locale = 'zh-u-ks-level2-kr-latn-hani', deterministic = false);

UPDATE pg_catalog.pg_cast SET castcontext = 'a'
 WHERE castsource = 'integer'::regtype AND casttarget = 'boolean'::regtype;

CREATE FUNCTION bit_equals_number(boolean, integer) RETURNS boolean
  LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
  RETURN $1::integer = $2;
CREATE FUNCTION bit_differs_from_number(boolean, integer) RETURNS boolean
  LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
  RETURN $1::integer <> $2;
CREATE FUNCTION number_equals_bit(integer, boolean) RETURNS boolean
  LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
  RETURN $1 = $2::integer;
CREATE FUNCTION number_differs_from_bit(integer, boolean) RETURNS boolean
  LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
  RETURN $1 <> $2::integer;
CREATE OPERATOR = (LEFTARG = boolean, RIGHTARG = integer, FUNCTION = bit_equals_number,
  COMMUTATOR = =, NEGATOR = <>);
CREATE OPERATOR <> (LEFTARG = boolean, RIGHTARG = integer, FUNCTION = bit_differs_from_number,
  COMMUTATOR = <>, NEGATOR = =);
CREATE OPERATOR = (LEFTARG = integer, RIGHTARG = boolean, FUNCTION = number_equals_bit,
  COMMUTATOR = =, NEGATOR = <>);
CREATE OPERATOR <> (LEFTARG = integer, RIGHTARG = boolean, FUNCTION = number_differs_from_bit,
  COMMUTATOR = <>, NEGATOR = =);

-- len(s): characters without the trailing blanks.
CREATE FUNCTION len(text) RETURNS integer
  LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
  RETURN pg_catalog.length(pg_catalog.rtrim($1, ' '));

-- right(s, n) and left(s, n) of a column's value: the last or first n
-- characters as stored, trailing blanks included; a negative n is an error.
CREATE FUNCTION "right"(bpchar, integer) RETURNS bpchar
  LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
BEGIN
  IF $2 < 0 THEN
    RAISE EXCEPTION 'Invalid length parameter passed to the right function.'
      USING ERRCODE = '22023';
  END IF;
  RETURN pg_catalog."right"(pg_catalog.concat($1), $2);
END $$;
CREATE FUNCTION "left"(bpchar, integer) RETURNS bpchar
  LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
BEGIN
  IF $2 < 0 THEN
    RAISE EXCEPTION 'Invalid length parameter passed to the left function.'
      USING ERRCODE = '22023';
  END IF;
  RETURN pg_catalog."left"(pg_catalog.concat($1), $2);
END $$;

-- substring(s, start, length) of a column's value, trailing blanks included.
CREATE FUNCTION "substring"(bpchar, integer, integer) RETURNS bpchar
  LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
  RETURN pg_catalog.substring(pg_catalog.concat($1), $2, $3);

-- Fills a row id left out of an INSERT with the largest one so far plus one.
CREATE FUNCTION next_row_id() RETURNS trigger LANGUAGE plpgsql AS $$
DECLARE
  next_id integer;
BEGIN
  IF pg_catalog.to_jsonb(NEW) ->> TG_ARGV[0] IS NULL THEN
    EXECUTE pg_catalog.format('SELECT coalesce(max(%I), 0) + 1 FROM %I.%I',
                              TG_ARGV[0], TG_TABLE_SCHEMA, TG_TABLE_NAME)
       INTO next_id;
    NEW := pg_catalog.jsonb_populate_record(NEW, pg_catalog.jsonb_build_object(TG_ARGV[0], next_id));
  END IF;
  RETURN NEW;
END $$;

CREATE DOMAIN tinyint AS smallint CHECK (VALUE BETWEEN 0 AND 255);
CREATE DOMAIN datetime AS timestamp(3) without time zone;

CREATE TABLE AccInformation (
  cSysID      bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cName       bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cCaption    bpchar COLLATE Chinese_PRC_CI_AS,
  cValue      bpchar COLLATE Chinese_PRC_CI_AS,
  cDefault    bpchar COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE Inventory (
  cInvCode    bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cInvName    bpchar COLLATE Chinese_PRC_CI_AS,
  cInvStd     bpchar COLLATE Chinese_PRC_CI_AS,
  cInvCCode   bpchar COLLATE Chinese_PRC_CI_AS,
  cInvM_Unit  bpchar COLLATE Chinese_PRC_CI_AS,
  iInvRCost   double precision,
  bTrack      boolean,
  bSale       boolean,
  bPurchase   boolean,
  bSelf       boolean,
  bComsume    boolean,
  bFree1 boolean, bFree2 boolean, bFree3 boolean, bFree4 boolean, bFree5 boolean,
  bFree6 boolean, bFree7 boolean, bFree8 boolean, bFree9 boolean, bFree10 boolean
);

CREATE TABLE InventoryClass (
  cInvCCode   bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cInvCName   bpchar COLLATE Chinese_PRC_CI_AS,
  iInvCGrade  smallint,
  bInvCEnd    boolean
);

CREATE TABLE Vendor (
  cVenCode    bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cVenName    bpchar COLLATE Chinese_PRC_CI_AS,
  cVenAbbName bpchar COLLATE Chinese_PRC_CI_AS,
  cVCCode     bpchar COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE VendorClass (
  cVCCode     bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cVCName     bpchar COLLATE Chinese_PRC_CI_AS,
  iVCGrade    smallint,
  bVCEnd      boolean
);

CREATE TABLE Customer (
  cCusCode    bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cCusName    bpchar COLLATE Chinese_PRC_CI_AS,
  cCusAbbName bpchar COLLATE Chinese_PRC_CI_AS,
  cCCCode     bpchar COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE CustomerClass (
  cCCCode     bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cCCName     bpchar COLLATE Chinese_PRC_CI_AS,
  iCCGrade    smallint,
  bCCEnd      boolean
);

CREATE TABLE Department (
  cDepCode    bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cDepName    bpchar COLLATE Chinese_PRC_CI_AS,
  iDepGrade   smallint,
  bDepEnd     boolean
);

CREATE TABLE Warehouse (
  cWhCode     bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cWhName     bpchar COLLATE Chinese_PRC_CI_AS,
  cDepCode    bpchar COLLATE Chinese_PRC_CI_AS,
  cWhValueStyle bpchar COLLATE Chinese_PRC_CI_AS,
  cMonth      bpchar COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE Person (
  cPersonCode bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cPersonName bpchar COLLATE Chinese_PRC_CI_AS,
  cDepCode    bpchar COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE Rd_Style (
  cRdCode     bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cRdName     bpchar COLLATE Chinese_PRC_CI_AS,
  bRdFlag     boolean,
  iRdGrade    smallint,
  bRdEnd      boolean
);

CREATE TABLE SettleStyle (
  cSSCode     bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cSSName     bpchar COLLATE Chinese_PRC_CI_AS,
  iSSGrade    smallint,
  bSSEnd      boolean
);

CREATE TABLE Code (
  cCode       bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cCode_Name  bpchar COLLATE Chinese_PRC_CI_AS,
  iGrade      smallint,
  bEnd        boolean
);

CREATE TABLE CostObj (
  cCode       bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cName       bpchar COLLATE Chinese_PRC_CI_AS,
  iGrade      smallint,
  bEnd        boolean
);

CREATE TABLE Bank (
  cBCode      bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cBName      bpchar COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE ForeignCurrency (
  cExchCode   bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cExchName   bpchar COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE ExpenseItem (
  cExpCode    bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cExpName    bpchar COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE EcoClass (
  cEcoCode    bpchar COLLATE Chinese_PRC_CI_AS NOT NULL,
  cEcoName    bpchar COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE IA_HeadSet (
  AutoID      integer PRIMARY KEY,
  cWhCode     bpchar COLLATE Chinese_PRC_CI_AS,
  cInvCode    bpchar COLLATE Chinese_PRC_CI_AS,
  cInvCCode   bpchar COLLATE Chinese_PRC_CI_AS,
  cInvHead    bpchar COLLATE Chinese_PRC_CI_AS,
  cDifHead    bpchar COLLATE Chinese_PRC_CI_AS
);

CREATE TABLE GL_mEnd (
  iPeriod     tinyint NOT NULL,
  bFlag       boolean,
  bFlag_IA    boolean,
  bFlag_PU    boolean,
  bFlag_SA    boolean,
  bFlag_ST    boolean,
  bFlag_FA    boolean,
  bFlag_AP    boolean,
  bFlag_AR    boolean
);

CREATE TABLE IA_Subsidiary (
  AutoID      integer PRIMARY KEY,
  JustID      integer,
  cInvCode    bpchar COLLATE Chinese_PRC_CI_AS,
  cWhCode     bpchar COLLATE Chinese_PRC_CI_AS,
  cBusType    bpchar COLLATE Chinese_PRC_CI_AS,
  dKeepDate   datetime
);

CREATE TABLE JustInVouchs (
  AutoID      integer PRIMARY KEY,
  cJVCode     bpchar COLLATE Chinese_PRC_CI_AS,
  cInvCode    bpchar COLLATE Chinese_PRC_CI_AS,
  CorID       integer
);

CREATE TABLE RdRecord (
  ID          integer PRIMARY KEY,
  cCode       bpchar COLLATE Chinese_PRC_CI_AS,
  cBusType    bpchar COLLATE Chinese_PRC_CI_AS,
  dDate       datetime
);

CREATE TABLE RdRecords (
  AutoID      integer PRIMARY KEY,
  ID          integer,
  cInvCode    bpchar COLLATE Chinese_PRC_CI_AS,
  iQuantity   double precision
);

CREATE TRIGGER IA_HeadSet_AutoID BEFORE INSERT ON IA_HeadSet
  FOR EACH ROW EXECUTE FUNCTION next_row_id('autoid');
CREATE TRIGGER IA_Subsidiary_AutoID BEFORE INSERT ON IA_Subsidiary
  FOR EACH ROW EXECUTE FUNCTION next_row_id('autoid');
CREATE TRIGGER JustInVouchs_AutoID BEFORE INSERT ON JustInVouchs
  FOR EACH ROW EXECUTE FUNCTION next_row_id('autoid');
CREATE TRIGGER RdRecord_ID BEFORE INSERT ON RdRecord
  FOR EACH ROW EXECUTE FUNCTION next_row_id('id');
CREATE TRIGGER RdRecords_AutoID BEFORE INSERT ON RdRecords
  FOR EACH ROW EXECUTE FUNCTION next_row_id('autoid');
