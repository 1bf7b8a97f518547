-- A small sample company: a maker of office furniture with three stores.

INSERT INTO AccInformation (cSysID, cName, cCaption, cValue, cDefault) VALUES
  ('AA', 'cGoodClass',   '存货分类编码级次', '223', '223'),
  ('AA', 'cProvClass',   '供应商分类编码级次', '22', '22'),
  ('AA', 'cCustClass',   '客户分类编码级次', '22', '22'),
  ('AA', 'cDepLevel',    '部门编码级次', '22', '22'),
  ('AA', 'cDispLevel',   '收发类别编码级次', '12', '12'),
  ('AA', 'cSettleLevel', '结算方式编码级次', '12', '12'),
  ('AA', 'cGradeLevel',  '科目编码级次', '4222', '4222'),
  ('AA', 'cCostobj',     '成本对象编码级次', '22', NULL),
  ('IA', 'dIAStartDate', '存货启用日期', '2026-01-01', NULL),
  ('GL', 'dGLStartDate', '总账启用日期', '2026-01-01', NULL),
  ('IA', 'cValueStyle',  '核算方式', NULL, '按仓库核算');

INSERT INTO InventoryClass (cInvCCode, cInvCName, iInvCGrade, bInvCEnd) VALUES
  ('01',     '原材料', 1, 0),
  ('0101',   '板材',   2, 1),
  ('0102',   '五金件', 2, 1),
  ('02',     '产成品', 1, 0),
  ('0201',   '办公桌', 2, 1),
  ('0202',   '办公椅', 2, 1);

INSERT INTO Inventory (cInvCode, cInvName, cInvStd, cInvCCode, cInvM_Unit, iInvRCost,
                       bTrack, bSale, bPurchase, bSelf, bComsume,
                       bFree1, bFree2, bFree3, bFree4, bFree5, bFree6, bFree7, bFree8, bFree9, bFree10) VALUES
  ('010101', '刨花板 18mm', '2440*1220', '0101', '张', 86.5,  0, 0, 1, 0, 1,  1, 0, 0, 0, 0, 0, 0, 0, 0, 0),
  ('010102', '中纤板 15mm', '2440*1220', '0101', '张', 72.0,  0, 0, 1, 0, 1,  1, 1, 0, 0, 0, 0, 0, 0, 0, 0),
  ('010201', '铰链',        '35mm',      '0102', '个', 3.2,   1, 0, 1, 0, 1,  0, 0, 0, 0, 0, 0, 0, 0, 0, 0),
  ('010202', '滑轨',        '400mm',     '0102', '副', 18.75, 1, 0, 1, 0, 1,  0, 0, 0, 0, 0, 0, 0, 0, 0, 0),
  ('020101', '经理办公桌',  '1800*900',  '0201', '张', 1260,  1, 1, 0, 1, 0,  1, 1, 0, 0, 0, 0, 0, 0, 0, 1),
  ('020201', '人体工学椅',  'K-200',     '0202', '把', 480,   0, 1, 0, 1, 0,  0, 0, 0, 0, 0, 0, 0, 0, 0, 0);

INSERT INTO VendorClass (cVCCode, cVCName, iVCGrade, bVCEnd) VALUES
  ('01', '材料供应商', 1, 0),
  ('0101', '板材供应商', 2, 1),
  ('0102', '五金供应商', 2, 1);

INSERT INTO Vendor (cVenCode, cVenName, cVenAbbName, cVCCode) VALUES
  ('V001', '上海森林木业有限公司', '森林木业', '0101'),
  ('V002', '广州恒力五金制品厂',   '恒力五金', '0102');

INSERT INTO CustomerClass (cCCCode, cCCName, iCCGrade, bCCEnd) VALUES
  ('01', '经销商', 1, 0),
  ('0101', '华东经销商', 2, 1),
  ('02', '直销客户', 1, 1);

INSERT INTO Customer (cCusCode, cCusName, cCusAbbName, cCCCode) VALUES
  ('C001', '杭州博雅办公家具有限公司', '博雅办公', '0101'),
  ('C002', '云溪新区管理委员会',     '云溪管委会', '02');

INSERT INTO Department (cDepCode, cDepName, iDepGrade, bDepEnd) VALUES
  ('01', '供应部', 1, 1),
  ('02', '生产部', 1, 0),
  ('0201', '板式车间', 2, 1),
  ('03', '销售部', 1, 1),
  ('04', '财务部', 1, 1);

INSERT INTO Warehouse (cWhCode, cWhName, cDepCode, cWhValueStyle, cMonth) VALUES
  ('01', '原料库',   '01',   '先进先出法', '202603'),
  ('02', '成品库',   '03',   '全月平均法', '202603'),
  ('03', '车间库',   '0201', '个别计价法', '202603');

INSERT INTO Person (cPersonCode, cPersonName, cDepCode) VALUES
  ('001', '王建国', '01'),
  ('002', '李秀英', '03'),
  ('003', '张伟',   '0201');

INSERT INTO Rd_Style (cRdCode, cRdName, bRdFlag, iRdGrade, bRdEnd) VALUES
  ('1',  '入库',     1, 1, 0),
  ('11', '采购入库', 1, 2, 1),
  ('12', '产成品入库', 1, 2, 1),
  ('2',  '出库',     0, 1, 0),
  ('21', '销售出库', 0, 2, 1),
  ('22', '领料出库', 0, 2, 1);

INSERT INTO SettleStyle (cSSCode, cSSName, iSSGrade, bSSEnd) VALUES
  ('1', '现金结算', 1, 1),
  ('2', '支票',     1, 0),
  ('21', '现金支票', 2, 1),
  ('22', '转账支票', 2, 1),
  ('3', '电汇',     1, 1);

INSERT INTO Code (cCode, cCode_Name, iGrade, bEnd) VALUES
  ('1403', '原材料', 1, 1),
  ('1405', '库存商品', 1, 1),
  ('1404', '材料成本差异', 1, 1),
  ('6401', '主营业务成本', 1, 1);

INSERT INTO CostObj (cCode, cName, iGrade, bEnd) VALUES
  ('01', '办公桌系列', 1, 0),
  ('0101', '经理办公桌', 2, 1),
  ('02', '办公椅系列', 1, 1);

INSERT INTO Bank (cBCode, cBName) VALUES ('01', '中国工商银行'), ('02', '招商银行');
INSERT INTO ForeignCurrency (cExchCode, cExchName) VALUES ('USD', '美元'), ('EUR', '欧元');
INSERT INTO ExpenseItem (cExpCode, cExpName) VALUES ('01', '运输费'), ('02', '装卸费');
INSERT INTO EcoClass (cEcoCode, cEcoName) VALUES ('01', '材料费'), ('02', '人工费');

INSERT INTO IA_HeadSet (cWhCode, cInvCode, cInvCCode, cInvHead, cDifHead) VALUES
  ('01', NULL, '01',  '1403', '1404'),
  (NULL, NULL, '02',  '1405', NULL),
  ('02', '020101', NULL, '1405', '1404');

INSERT INTO GL_mEnd (iPeriod, bFlag, bFlag_IA, bFlag_PU, bFlag_SA, bFlag_ST, bFlag_FA, bFlag_AP, bFlag_AR) VALUES
  (1, 1, 1, 1, 1, 1, 1, 1, 1),
  (2, 1, 1, 1, 1, 1, 1, 1, 1),
  (3, 0, 0, 1, 1, 1, 0, 0, 0),
  (4, 0, 0, 0, 0, 0, 0, 0, 0), (5, 0, 0, 0, 0, 0, 0, 0, 0), (6, 0, 0, 0, 0, 0, 0, 0, 0),
  (7, 0, 0, 0, 0, 0, 0, 0, 0), (8, 0, 0, 0, 0, 0, 0, 0, 0), (9, 0, 0, 0, 0, 0, 0, 0, 0),
  (10, 0, 0, 0, 0, 0, 0, 0, 0), (11, 0, 0, 0, 0, 0, 0, 0, 0), (12, 0, 0, 0, 0, 0, 0, 0, 0);

INSERT INTO RdRecord (ID, cCode, cBusType, dDate) VALUES
  (1001, '0000000001', '普通采购', '2026-03-05 00:00:00'),
  (1002, '0000000002', '领料',     '2026-03-12 00:00:00');

INSERT INTO RdRecords (AutoID, ID, cInvCode, iQuantity) VALUES
  (5001, 1001, '010101', 200),
  (5002, 1002, '010101', 40);

INSERT INTO JustInVouchs (AutoID, cJVCode, cInvCode, CorID) VALUES
  (9001, '0000000001', '010101', 5001),
  (9002, '0000000002', '010101', 5002);

INSERT INTO IA_Subsidiary (JustID, cInvCode, cWhCode, cBusType, dKeepDate) VALUES
  (NULL, '010101', '01', '普通采购', '2026-03-05 00:00:00'),
  (NULL, '010101', '01', '领料',     '2026-03-12 00:00:00'),
  (9001, '010101', '01', '入库调整', '2026-03-31 00:00:00');
