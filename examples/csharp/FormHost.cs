// form-host in C#: what an inventory entry form does with clsPub, through
// the C interface.
//
//   mono form-host.exe DATABASE
using System;
using Kavrin;

static class FormHost {
  static int Main(string[] argv) {
    if (argv.Length != 1) {
      Console.Error.WriteLine("usage: form-host.exe DATABASE");
      return 2;
    }
    Host.ShowMessagesOn(text => Console.WriteLine("message box:    " + text));
    try {
      using (var pub = new ClsPub(argv[0])) {
        // The user types 010101 into the inventory field: is it an item, and what is it called?
        var code = (string)pub.Call("CheckDirNoGrade", "010101", (short)0);
        Console.WriteLine("inventory code: " + code);
        Console.WriteLine("name:           " + pub.Call("CodeToName", code, (byte)0));
        var price = pub.Call("InvCodeToUnitPrice", code);
        Console.WriteLine("unit price:     " + pub.Call("FormatNum", price));

        // A list entry "code   name" split back into its code; the entry is rewritten in place.
        var entry = new object[] {"01             原料库"};
        Console.WriteLine("warehouse:      " + pub.Call("SepCode", entry));
        Console.WriteLine("entry now:      '" + entry[0] + "'");
        var free = new object[] {"010102", false, false};
        pub.Call("GetInvUseFree", free);
        Console.WriteLine("free items:     " + free[1] + ", " + free[2]);
        Console.WriteLine("last keep date: " + ((DateTime)pub.Call("SubMaxKeepDate")).ToString("yyyy-MM-dd"));

        // The component fills a list control of the form.
        var stores = new ListControl();
        pub.Call("FillCboCK", stores);
        Console.WriteLine("stores:         " + string.Join(" | ", stores.Items));

        // An unknown item shows a message box through the host.
        pub.Call("InvCodeIsTorF", "999999", "bTrack");

        // A failing call carries the platform's error number.
        pub.Call("GetAccInfo", "A'A", "x");
      }
    } catch (KavrinException e) {
      Console.WriteLine("failed call:    error " + e.Number + ": " + e.Description);
    } finally {
      Host.Restore();
    }
    return 0;
  }
}
