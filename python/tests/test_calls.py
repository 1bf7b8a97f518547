"""clsPub from Python: typed values both ways, by-reference writes, errors
with their numbers, objects, a list control, a text box and message boxes."""

import datetime

import pytest

import kavrin


def test_form_calls_and_values(pub):
    assert pub.CheckDirNoGrade("010101", 0) == "010101"
    assert pub.CheckDirNoGrade("刨花板 18mm", 0, False) == "010101"
    assert pub.CheckDirNoGrade("010101", 0, IsReturnName=True) == "刨花板 18mm"
    assert pub.checkdirnograde("森林木业", 1) == "V001"  # vendors by short name; any letter case
    assert pub.CodeToName("010101", 0) == "刨花板 18mm"
    assert pub.InvCodeToUnitPrice("010101") == 86.5
    assert pub.FormatNum(1234.5) == "1,234.50"
    assert pub.FormatNum(0, True) == "0" and pub.FormatNum(0) == ""
    assert pub.ReFormat(" -5 ") == -5.0
    length = pub.CodeGrade2Length(2, 7)
    assert length == 4 and type(length) is kavrin.Integer
    assert pub.SubMaxKeepDate() == datetime.datetime(2026, 3, 31)
    assert pub.InvIsBatch("nothing") is False
    assert pub.FromTo("cInvCode", "none", "cInvName", "Inventory") is None  # Null
    assert pub.CheckWareDep() in (True, False)
    assert pub.TextSelected.__doc__ == "TextSelected()"
    # A code with characters outside the basic plane and lone surrogates go through intact.
    assert pub.SepCode("\U0001F4E6x \ud800", -1)[0] == "\ud800"


def test_written_arguments(pub):
    assert pub.SepCode("01             原料库") == ("01", " 01             原料库")
    entry = kavrin.Ref("02  成品库")
    assert pub.SepCode(entry, True) == ("成品库", "02  成品库")  # not rewritten with bName
    assert pub.SepCode(entry)[0] == "02" and entry.value == " 02  成品库"
    assert pub.GetInvUseFree("010102", False, False) == (None, True, True)
    assert pub.GetInvUseFree("999999", True, True) == (None, False, False)

    flags = kavrin.Array([False] * 10, element_type="Boolean")
    _, after = pub.GetInvUseFreeNew("020101", flags)
    assert after == [True, True] + [False] * 7 + [True]
    assert after.element_type == "Boolean" and after.lbound == 0
    assert flags == [False] * 10  # the caller's own list is not touched
    with pytest.raises(kavrin.Error) as failure:
        pub.GetInvUseFreeNew("020101", kavrin.Array([False] * 3, lbound=1))
    assert failure.value.number == 9

    assert pub.StartAccMonth("") == (1, "IA")
    assert pub.StartAccMonth() == (1, kavrin.Missing)
    assert pub.GetInvDifHead("01", "0101", "010101", "", "") == (None, "1403", "1404")
    assert pub.GetInvDifHead("09", "", "x", "kept", "kept") == (None, "kept", "kept")


def test_errors_carry_the_platform_numbers(pub):
    with pytest.raises(kavrin.Error) as failure:
        pub.GetAccInfo("A'A", "x")
    error = failure.value
    assert error.number == -2147217900 and error.source and error.description
    assert str(error) == f"{error.description} ({error.number})"

    for call, number in [(lambda: pub.NoSuchMember(), 438),
                         (lambda: pub.CheckDirNoGrade("010101"), 449),
                         (lambda: pub.CheckInv("a", True, 3), 450),
                         (lambda: pub.CheckDirNoGrade("010101", "zero"), 13),
                         (lambda: pub.CheckDirNoGrade("010101", kavrin.Integer(40000)), 6),
                         (lambda: pub.GetMonthState("GL", None), 94),
                         (lambda: pub.GetCodeLen("2x"), 13),
                         (lambda: pub.FormatNum1(1.5, -1), 5)]:
        with pytest.raises(kavrin.Error) as failure:
            call()
        assert failure.value.number == number
    with pytest.raises(TypeError):
        pub.CheckInv(cNoSuchParameter="x")
    with pytest.raises(kavrin.Error):
        kavrin.ClsPub("/nonexistent/folder/none.db")
    with pytest.raises(kavrin.Error) as failure:
        kavrin.create_object("Other.Thing")
    assert failure.value.number == 429


def test_objects_by_handle(pub, demo_db):
    database = pub.DBIA
    assert database.type_name == "KitDatabase"
    other = kavrin.ClsPub()
    other.DBIA = database
    assert other.CheckDirNoGrade("C001", 2) == "C001"
    other.DBIA = None  # emptied: the next use makes an unconnected database
    with pytest.raises(kavrin.Error) as failure:
        other.CheckDirNoGrade("C001", 2)
    assert failure.value.number == 3709
    other.DBIA = kavrin.open_database(demo_db)
    assert other.CheckInv("010201") == "010101"  # answered from the first row

    desktop = kavrin.open_dao(demo_db)
    assert pub.ExistTableQueryDAO(desktop, "inventory") is True
    assert pub.ExistTableQueryDAO(desktop, "NoSuchTable") is False
    assert pub.ExistTableQueryDAO(kavrin.Object(None), "x") is True  # Nothing: not absent
    with pytest.raises(kavrin.Error) as failure:
        other.DBIA = desktop
    assert failure.value.number == 13

    # Late binding on any object the component hands out.
    records = database.OpenQuery("SELECT cWhCode FROM Warehouse ORDER BY cWhCode", 2)
    assert records.type_name == "KitRecordset" and records.get("RecordCount") == 3
    same = kavrin.create_object("kavrin.clspub")
    assert same.type_name == "clsPub" and same.FormatNum(2) == "2.00"


def test_list_control_text_box_and_message_boxes(pub, host):
    stores = kavrin.ListControl(["stale"])
    assert pub.FillCboCK(stores) is None
    assert stores.items == ["01             原料库", "02             成品库", "03             车间库"]
    pub.FillCboCK(stores, "0201")
    assert stores.items == ["03             车间库"]

    class NoItems:
        def Clear(self):
            pass

    class Failing(kavrin.ListControl):
        def AddItem(self, item, index=None):
            raise kavrin.Error(5, "ListBox", "full")

    class Broken(kavrin.ListControl):
        def AddItem(self, item, index=None):
            raise RuntimeError("boom")

    for control, number, description in [(NoItems(), 438, None), (Failing(), 5, "full"),
                                         (Broken(), 440, "RuntimeError: boom")]:
        with pytest.raises(kavrin.Error) as failure:
            pub.FillCboCK(control)
        assert failure.value.number == number
        assert description is None or failure.value.description == description

    assert pub.InvCodeIsTorF("999999", "bTrack") is False
    assert host.messages == ["该存货没有找到！"]

    class TextBox:
        Text = "刨花板"
        SelStart = SelLength = None

    box = TextBox()
    host.focused = box
    pub.TextSelected()
    assert (box.SelStart, box.SelLength) == (0, 3)
    assert type(box.SelLength) is kavrin.Integer
    host.focused = None
    with pytest.raises(kavrin.Error) as failure:
        pub.TextSelected()
    assert failure.value.number == 91


def test_members_are_all_reachable():
    names = [m[0] for m in kavrin.members()]
    assert len(names) == 40 and len(set(names)) == 39  # DBIA as read and assignment
    methods = [name for name, kind, _, _ in kavrin.members() if kind == "method"]
    assert len(methods) == 38  # every member but DBIA is a method
    assert all(callable(getattr(kavrin.ClsPub, name)) for name in methods)
    assert kavrin.version().count(".") == 2
