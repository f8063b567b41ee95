// What only the C# side has: pictures in memory of any kind, their lengths, single covariances, threads.
using System;
using System.Runtime.InteropServices;
using System.Threading;
using FisheyeCalibration;

static partial class Checks
{
    static bool failed;

    static void Expect(bool condition, string what)
    {
        if (condition) return;
        Print.Line("failed: " + what);
        failed = true;
    }

    static void ExpectThrown<Expected>(Action call, string what) where Expected : Exception
    {
        try
        {
            call();
        }
        catch (Expected)
        {
            return;
        }
        Expect(false, what);
    }

    static void Pictures()
    {
        var pixels = new byte[10 * 6];
        for (int i = 0; i < pixels.Length; ++i) pixels[i] = (byte)i;
        var bottomUp = new Picture(pixels, 10, 6, 8, -10);
        var part = new Picture(4, 2, 8);
        Fcal.Crop(bottomUp, part); // columns 3 ... 6; the picture's rows 2 and 3 are 3 and 2 of the array
        Expect(part.Pixels[0] == 33 && part.Pixels[4] == 23, "a negative stride begins with the bottom row");

        IntPtr memory = Marshal.AllocHGlobal(pixels.Length);
        Marshal.Copy(pixels, 0, memory, pixels.Length);
        var elsewhere = new Picture(new IntPtr(memory.ToInt64() + 50), 10, 6, 8, -10);
        var same = new Picture(4, 2, 8);
        Fcal.Crop(elsewhere, same);
        Marshal.FreeHGlobal(memory);
        Expect(Convert.ToBase64String(same.Pixels) == Convert.ToBase64String(part.Pixels),
               "memory outside the managed heap is the same picture");

        ExpectThrown<ArgumentException>(() => new Picture(pixels, 10, 7, 8, 0), "a short array is refused");
        ExpectThrown<ArgumentException>(() => new Picture(pixels, 9, 6, 8, 11), "and a long stride");
        ExpectThrown<ArgumentNullException>(() => new Picture(null, 1, 1, 8, 0), "and no array");
        new Picture(new byte[59], 9, 6, 8, 10); // the last row needs no padding
    }

    static void Covariances()
    {
        var solution = new Solution();
        solution.SetCovariance(3, 7, 0.5);
        Expect(solution.GetCovariance(3, 7) == 0.5 && solution.GetCovariance(7, 3) == 0, "one element is set");
        ExpectThrown<ArgumentOutOfRangeException>(() => solution.GetCovariance(0, 12), "columns end at 11");
        ExpectThrown<ArgumentOutOfRangeException>(() => solution.GetCovariance(-1, 0), "rows begin at 0");
    }

    // Every thread sees its own text.
    static void Threads()
    {
        var texts = new string[2];
        Action<int> fail = which => {
            for (int i = 0; i < 1000; ++i)
            {
                try
                {
                    if (which == 0) Fcal.FitAffine(new Point[0]);
                    else Fcal.Straighten(new Point[0]);
                }
                catch (NoResultException failure)
                {
                    if (texts[which] == null) texts[which] = failure.Message;
                    if (texts[which] != failure.Message) texts[which] = "mixed";
                }
            }
        };
        var other = new Thread(() => fail(1));
        other.Start();
        fail(0);
        other.Join();
        Expect(texts[0] == "points: fewer than 3" && texts[1] == "points: none", "texts belong to threads");
    }

    public static int Run()
    {
        Pictures();
        Covariances();
        NullArrays();
        NullPictures();
#if FISHEYE_CALIBRATION_SPANS
        ShortSpans();
#endif
        Threads();
        if (!failed) Print.Line("all checks passed");
        return failed ? 1 : 0;
    }
}
