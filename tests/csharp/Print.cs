// Prints records, constants and results as printing.c does.
using System;
using System.Collections.Generic;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Text;
using FisheyeCalibration;

static class Print
{
    public static void Line(string text) { Console.Out.Write(text + "\n"); }

    // The fields in memory order, private ones included.
    static FieldInfo[] FieldsOf(Type record)
    {
        FieldInfo[] fields = record.GetFields(BindingFlags.Instance | BindingFlags.Public | BindingFlags.NonPublic);
        Array.Sort(fields, (a, b) => OffsetOf(record, a).CompareTo(OffsetOf(record, b)));
        return fields;
    }

    static int OffsetOf(Type record, FieldInfo field) { return (int)Marshal.OffsetOf(record, field.Name); }

    static int SizeOf(Type type)
    {
        return Marshal.SizeOf(type.IsEnum ? Enum.GetUnderlyingType(type) : type);
    }

    public static void Layouts()
    {
        var records = new[] { typeof(Point), typeof(Camera), typeof(Dual), typeof(Solution), typeof(ViewsResult),
                              typeof(NativeViewsOptions), typeof(NativeImage), typeof(NativeRigView),
                              typeof(NativeTargetView) };
        foreach (Type record in records)
        {
            Line(record.Name + " " + SizeOf(record));
            foreach (FieldInfo field in FieldsOf(record))
                Line("  " + field.Name + " " + OffsetOf(record, field) + " " + SizeOf(field.FieldType));
        }
        foreach (Type constants in new[] { typeof(Status), typeof(Noise), typeof(Outcome) })
        {
            var line = new StringBuilder(constants.Name);
            foreach (object value in Enum.GetValues(constants)) line.Append(" " + value + "=" + (int)value);
            Line(line.ToString());
        }
    }

    static byte[] BytesOf(Array elements)
    {
        var bytes = new byte[elements.Length * SizeOf(elements.GetType().GetElementType())];
        GCHandle handle = GCHandle.Alloc(elements, GCHandleType.Pinned);
        if (bytes.Length > 0) Marshal.Copy(handle.AddrOfPinnedObject(), bytes, 0, bytes.Length);
        handle.Free();
        return bytes;
    }

    static string Hex(byte[] bytes, int from, int count)
    {
        var text = new StringBuilder();
        for (int i = 0; i < count; ++i) text.Append(bytes[from + i].ToString("x2"));
        return text.ToString();
    }

    public static void Show(string what, Array elements)
    {
        byte[] bytes = BytesOf(elements);
        Line("  " + what + " " + Hex(bytes, 0, bytes.Length));
    }

    public static void ShowFlags(string what, bool[][] flags)
    {
        var bytes = new List<byte>();
        foreach (bool[] list in flags)
            foreach (bool flag in list) bytes.Add((byte)(flag ? 1 : 0));
        Show(what, bytes.ToArray());
    }

    public static void ShowRecords<T>(T record) where T : struct { ShowRecords(new[] { record }); }

    // Without the bytes between fields.
    public static void ShowRecords<T>(T[] records) where T : struct
    {
        byte[] bytes = BytesOf(records);
        FieldInfo[] fields = FieldsOf(typeof(T));
        for (int k = 0; k < records.Length; ++k)
        {
            var line = new StringBuilder("  " + typeof(T).Name + " ");
            foreach (FieldInfo field in fields)
                line.Append(Hex(bytes, k * SizeOf(typeof(T)) + OffsetOf(typeof(T), field), SizeOf(field.FieldType)));
            Line(line.ToString());
        }
    }

    // Prints the name of the function, its status and its text; says whether it succeeded.
    public static bool Did(string function, Action call)
    {
        try
        {
            call();
            Line(function + " 0 ");
            return true;
        }
        catch (FcalException failure)
        {
            Line(function + " " + (int)failure.Status + " " + failure.Message);
            return false;
        }
    }
}
