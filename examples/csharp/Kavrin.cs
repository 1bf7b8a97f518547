// A small binding of the C interface (kavrin/kavrin.h) for C#, through
// P/Invoke: a clsPub called by name with .NET values, arguments written by
// reference copied back into the caller's array, failures as KavrinException,
// and .NET objects (a list control) and a message box the component calls.
// The value layout below is that of a 64-bit process.
using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using System.Text;

namespace Kavrin {

[StructLayout(LayoutKind.Explicit)]
struct Value {
  [FieldOffset(0)] public int Kind;
  [FieldOffset(4)] public int ElementKind;
  [FieldOffset(8)] public int I;
  [FieldOffset(8)] public double D;
  [FieldOffset(8)] public IntPtr Data;  // a text's units, an object, an array's items
  [FieldOffset(16)] public UIntPtr Length;  // a text's length, an array's count
  [FieldOffset(24)] public int LBound;
  [FieldOffset(32)] public IntPtr Owned;
}

enum Kind { Empty, Null, Integer, Long, Byte, Double, Boolean, Date, String, Object, Array, Missing,
            Variant, String16 }

[UnmanagedFunctionPointer(CallingConvention.Cdecl)]
delegate int InvokeCallback(IntPtr context, IntPtr name, int kind, IntPtr args, UIntPtr count,
                            IntPtr result, IntPtr error);
[UnmanagedFunctionPointer(CallingConvention.Cdecl)]
delegate void ReleaseCallback(IntPtr context);
[UnmanagedFunctionPointer(CallingConvention.Cdecl)]
delegate int MessageBoxCallback(IntPtr context, IntPtr prompt, int buttons, IntPtr title);

[StructLayout(LayoutKind.Sequential)]
struct HostCallbacks {
  public IntPtr Context;
  public MessageBoxCallback MessageBox;
  public IntPtr ActiveControl;
  public IntPtr Release;
}

static class Native {
  const string Library = "kavrin";
  [DllImport(Library)] public static extern int kavrin_open(byte[] connection, out IntPtr pub, out IntPtr error);
  [DllImport(Library)] public static extern void kavrin_object_release(IntPtr obj);
  [DllImport(Library)] public static extern int kavrin_invoke(IntPtr obj, byte[] name, int kind,
      [In, Out] Value[] args, UIntPtr count, out Value result, int flags, out IntPtr error);
  [DllImport(Library)] public static extern void kavrin_value_clear(ref Value value);
  [DllImport(Library)] public static extern int kavrin_error_number(IntPtr error);
  [DllImport(Library)] public static extern IntPtr kavrin_error_source16(IntPtr error);
  [DllImport(Library)] public static extern IntPtr kavrin_error_description16(IntPtr error);
  [DllImport(Library)] public static extern IntPtr kavrin_error_new(int number, byte[] source, byte[] description);
  [DllImport(Library)] public static extern void kavrin_error_free(IntPtr error);
  [DllImport(Library)] public static extern IntPtr kavrin_object_new(byte[] typeName, InvokeCallback invoke,
      ReleaseCallback release, IntPtr context);
  [DllImport(Library)] public static extern int kavrin_set_host(ref HostCallbacks host, out IntPtr error);
  [DllImport(Library)] public static extern int kavrin_set_host(IntPtr none, out IntPtr error);

  public static byte[] Utf8(string text) {
    return text == null ? null : Encoding.UTF8.GetBytes(text + "\0");
  }
}

public sealed class KavrinException : Exception {
  public int Number { get; }
  public string Origin { get; }
  public string Description { get; }

  internal KavrinException(IntPtr error) : base(Marshal.PtrToStringUni(Native.kavrin_error_description16(error))) {
    Number = Native.kavrin_error_number(error);
    Origin = Marshal.PtrToStringUni(Native.kavrin_error_source16(error));
    Description = Message;
    Native.kavrin_error_free(error);
  }
}

// The marker of an omitted optional argument.
public sealed class Missing {
  public static readonly Missing Value = new Missing();
}

// A list control the component fills by calling Clear and AddItem.
public sealed class ListControl {
  public readonly List<string> Items = new List<string>();
}

public sealed class ClsPub : IDisposable {
  IntPtr handle;

  public ClsPub(string connection) {
    IntPtr error;
    if (Native.kavrin_open(Native.Utf8(connection), out handle, out error) != 0)
      throw new KavrinException(error);
  }

  public void Dispose() {
    Native.kavrin_object_release(handle);
    handle = IntPtr.Zero;
  }

  // Calls member `name`; arguments the member writes are stored back into `args`.
  public object Call(string name, params object[] args) {
    var values = new Value[args.Length];
    var pinned = new List<GCHandle>();
    try {
      for (int i = 0; i < args.Length; ++i) values[i] = ToValue(args[i], pinned);
      Value result;
      IntPtr error;
      int status = Native.kavrin_invoke(handle, Native.Utf8(name), 0, values,
                                        (UIntPtr)values.Length, out result, 1, out error);
      for (int i = 0; i < values.Length; ++i) {
        if (values[i].Owned == IntPtr.Zero) continue;  // not written
        args[i] = FromValue(values[i]);
        Native.kavrin_value_clear(ref values[i]);
      }
      if (status != 0) throw new KavrinException(error);
      object answer = FromValue(result);
      Native.kavrin_value_clear(ref result);
      return answer;
    } finally {
      foreach (var pin in pinned) pin.Free();
      foreach (var list in lists) list.Dispose();
      lists.Clear();
    }
  }

  static Value ToValue(object arg, List<GCHandle> pinned) {
    var v = new Value();
    if (arg == null) {
      v.Kind = (int)Kind.Null;
    } else if (arg is Missing) {
      v.Kind = (int)Kind.Missing;
    } else if (arg is string) {
      var text = (string)arg;
      var pin = GCHandle.Alloc(text.ToCharArray(), GCHandleType.Pinned);
      pinned.Add(pin);
      v.Kind = (int)Kind.String16;
      v.Data = pin.AddrOfPinnedObject();
      v.Length = (UIntPtr)text.Length;
    } else if (arg is bool) {
      v.Kind = (int)Kind.Boolean;
      v.I = (bool)arg ? -1 : 0;
    } else if (arg is short) {
      v.Kind = (int)Kind.Integer;
      v.I = (short)arg;
    } else if (arg is byte) {
      v.Kind = (int)Kind.Byte;
      v.I = (byte)arg;
    } else if (arg is int) {
      v.Kind = (int)Kind.Long;
      v.I = (int)arg;
    } else if (arg is double) {
      v.Kind = (int)Kind.Double;
      v.D = (double)arg;
    } else if (arg is DateTime) {
      v.Kind = (int)Kind.Date;
      v.D = ((DateTime)arg).ToOADate();
    } else if (arg is ListControl) {
      var callback = new CallbackObject((ListControl)arg);
      lists.Add(callback);
      v.Kind = (int)Kind.Object;
      v.Data = callback.Handle;
    } else {
      throw new ArgumentException("no Variant for " + arg.GetType());
    }
    return v;
  }

  internal static object FromValue(Value v) {
    switch ((Kind)v.Kind) {
      case Kind.Null: return null;
      case Kind.Integer: return (short)v.I;
      case Kind.Long: return v.I;
      case Kind.Byte: return (byte)v.I;
      case Kind.Boolean: return v.I != 0;
      case Kind.Double: return v.D;
      case Kind.Date: return DateTime.FromOADate(v.D);
      case Kind.String16: return Marshal.PtrToStringUni(v.Data, (int)v.Length);
      case Kind.String: return Marshal.PtrToStringAnsi(v.Data, (int)v.Length);
      default: return null;  // Empty, Missing; objects and arrays are left out of this example
    }
  }

  [ThreadStatic] static List<CallbackObject> listsField;
  static List<CallbackObject> lists => listsField ?? (listsField = new List<CallbackObject>());
}

// A .NET list control as an object of the component, for the length of a call.
sealed class CallbackObject : IDisposable {
  static readonly InvokeCallback invoke = Invoke;
  static readonly ReleaseCallback release = context => GCHandle.FromIntPtr(context).Free();
  public IntPtr Handle { get; private set; }

  public CallbackObject(ListControl list) {
    var context = GCHandle.ToIntPtr(GCHandle.Alloc(list));
    Handle = Native.kavrin_object_new(Native.Utf8("ComboBox"), invoke, release, context);
  }

  public void Dispose() {
    Native.kavrin_object_release(Handle);
    Handle = IntPtr.Zero;
  }

  static int Invoke(IntPtr context, IntPtr name, int kind, IntPtr args, UIntPtr count, IntPtr result,
                    IntPtr error) {
    var list = (ListControl)GCHandle.FromIntPtr(context).Target;
    string member = Marshal.PtrToStringAnsi(name);
    if (member == "Clear") {
      list.Items.Clear();
      return 0;
    }
    if (member == "AddItem" && (ulong)count >= 1) {
      var item = Marshal.PtrToStructure<Value>(args);
      list.Items.Add(item.Kind == (int)Kind.String
          ? Encoding.UTF8.GetString(Managed(item.Data, (int)item.Length))
          : Convert.ToString(ClsPub.FromValue(item)));
      return 0;
    }
    Marshal.WriteIntPtr(error, Native.kavrin_error_new(438, Native.Utf8("ComboBox"), null));
    return 1;
  }

  static byte[] Managed(IntPtr data, int length) {
    var bytes = new byte[length];
    Marshal.Copy(data, bytes, 0, length);
    return bytes;
  }
}

// The host's message box, shown on the console.
public static class Host {
  static MessageBoxCallback show;

  public static void ShowMessagesOn(Action<string> write) {
    show = (context, prompt, buttons, title) => {
      int length = 0;
      while (Marshal.ReadByte(prompt, length) != 0) ++length;
      var bytes = new byte[length];
      Marshal.Copy(prompt, bytes, 0, length);
      write(Encoding.UTF8.GetString(bytes));
      return 1;  // OK
    };
    var callbacks = new HostCallbacks { MessageBox = show };
    IntPtr error;
    if (Native.kavrin_set_host(ref callbacks, out error) != 0) throw new KavrinException(error);
  }

  public static void Restore() {
    IntPtr error;
    Native.kavrin_set_host(IntPtr.Zero, out error);
    show = null;
  }
}

}  // namespace Kavrin
