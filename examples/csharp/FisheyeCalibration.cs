// fisheye_calibration for C# and every language of .NET, in one source file: declarations of the
// functions of fisheye_calibration_c.h, which documents them, and methods that are safe to call.
// For .NET, .NET Framework 4 and Mono, in 64-bit processes; compile with -unsafe
// (<AllowUnsafeBlocks>true</AllowUnsafeBlocks>). docs/csharp.md shows how to use it.
//
// Failures are exceptions with the library's text: NoResultException where the C function returns
// FCAL_FALSE, FcalException otherwise. Null arguments are ArgumentNullException, arrays and spans
// that are too short ArgumentException. All methods may be called from any thread. The methods with
// spans are there on .NET (Core) 2.1 and later, and elsewhere if FISHEYE_CALIBRATION_SPANS is
// defined.
#if NET || NETCOREAPP2_1_OR_GREATER
#define FISHEYE_CALIBRATION_SPANS
#endif
using System;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;

namespace FisheyeCalibration
{
    public enum Status { Ok = 0, False = 1, BadArgument = 2, NoMemory = 3, ImageLibrary = 4, Other = 5 }

    public enum Noise { Smooth = 0, White = 1 }

    public enum Outcome
    {
        Solved = 0, BadInput = 1, TooFewPoints = 2, Degenerate = 3, NotConverged = 4, BehindCamera = 5,
        FoldedLens = 6, TooManyWrongPoints = 7, TooManyWrongViews = 8
    }

    // ---- records: the fields of the C header, arrays as single fields -------------------------------

    [StructLayout(LayoutKind.Sequential)]
    public struct Point
    {
        public int Id, Reserved1, Reserved2;
        public float Xw, Yw;
        public int Reserved3;
        public float X, Y;
        public double ReprojX, ReprojY, ErrorX, ErrorY;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Camera
    {
        public float U0, V0, Fx, Fy, Skewness;
        public double K0, K1, K2, K3, K4, K5;
        public float R0, R1, R2, R3, R4, R5, R6, R7, R8;
        public float Rx, Ry, Rz, Tx, Ty, Tz;
        public double P0, P1, P2, P3, P4, P5, P6, P7, P8;
        public float Pixel, DatumXw, DatumYw, ImageDx, ImageDy;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Dual
    {
        public float Pixel;
        public int Width, Height, DatumX, DatumY;
        public float DatumXw, DatumYw;
    }

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct Solution
    {
        public double Fx, Fy, Cx, Cy, K0, K1, Alpha;
        public double RotationX, RotationY, RotationZ, TranslationX, TranslationY, TranslationZ;
        fixed double covariance[144];

        // Of fx, fy, cx, cy, k0, k1, rotation, translation: rows and columns 0 ... 11.
        public double GetCovariance(int row, int column)
        {
            fixed (double* c = covariance) return c[IndexOf(row, column)];
        }

        public void SetCovariance(int row, int column, double value)
        {
            fixed (double* c = covariance) c[IndexOf(row, column)] = value;
        }

        static int IndexOf(int row, int column)
        {
            if (row < 0 || row >= 12) throw new ArgumentOutOfRangeException("row");
            if (column < 0 || column >= 12) throw new ArgumentOutOfRangeException("column");
            return 12 * row + column;
        }
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct ViewsResult
    {
        public int Size;
        public Outcome Outcome;
        public int RefusedView, Steps;
        public double Rms, NoiseSigma;
        public int NoiseAssumed, Reserved;
    }

    // Elements of "xy" and "xyz" arrays.
    [StructLayout(LayoutKind.Sequential)]
    public struct Xy
    {
        public float X, Y;
        public Xy(float x, float y) { X = x; Y = y; }
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Xyz
    {
        public float X, Y, Z;
        public Xyz(float x, float y, float z) { X = x; Y = y; Z = z; }
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct BedPoint // in double precision; also for raw pixels
    {
        public double X, Y;
        public BedPoint(double x, double y) { X = x; Y = y; }
    }

    // ---- the C interface ----------------------------------------------------------------------------

    [StructLayout(LayoutKind.Sequential)]
    struct NativeImage
    {
        public IntPtr Data;
        public int Width, Height, Stride, Bits;
    }

    [StructLayout(LayoutKind.Sequential)]
    struct NativeRigView
    {
        public NativeImage Frame;
        public IntPtr Camera, Points;
        public int Count;
    }

    [StructLayout(LayoutKind.Sequential)]
    struct NativeTargetView
    {
        public IntPtr Points;
        public int Count;
    }

    [StructLayout(LayoutKind.Sequential)]
    struct NativeViewsOptions
    {
        public int Size;
        public Noise Noise;
        public int NoPrior, KeepAll;
        public double StartFocalFactor;
        public IntPtr HeldLens;
    }

    static unsafe class Native
    {
        const string Lib = "fisheye_calibration"; // .dll; lib...so on Linux
        const CallingConvention C = CallingConvention.Cdecl;

        [DllImport(Lib, CallingConvention = C)] internal static extern IntPtr fcal_version();
        [DllImport(Lib, CallingConvention = C)] internal static extern IntPtr fcal_last_error();
        [DllImport(Lib, CallingConvention = C)] internal static extern IntPtr fcal_status_text(Status status);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_calibrate(
            int width, int height, Point* points, int count, int correctedWidth, int correctedHeight,
            Camera* camera, double* rms);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_save_camera(
            byte* path, Camera* camera);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_load_camera(
            byte* path, Camera* camera);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_save_dual(
            byte* path, Dual* dual);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_load_dual(
            byte* path, Dual* dual);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_correct(
            NativeImage* frame, Camera* camera, NativeImage* view, NativeImage* mask);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_crop(
            NativeImage* source, NativeImage* target);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_world_to_raw(
            Camera* camera, Xyz* world, int count, Xy* raw);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_world_to_corrected(
            Camera* camera, float cx, float cy, Xyz* world, int count, Xy* corrected);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_world_to_view(
            Camera* camera, float cx, float cy, Xy* world, int count, Xy* view);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_view_to_world(
            Camera* camera, float cx, float cy, Xy* view, int count, Xy* world);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_raw_to_world(
            Camera* camera, Xy* raw, int count, Xy* world);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_raw_to_corrected(
            Camera* camera, float cx, float cy, Xy* raw, int count, Xy* corrected);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_fit_affine(
            Point* points, int count, double* coefficients, double* errorX, double* errorY);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_straighten(
            Point* points, int count);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_common_points(
            Point* points1, int count1, Point* points2, int count2, int idCount, Point* common1, int capacity1,
            int* needed1, Point* common2, int capacity2, int* needed2);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_stitched_size(
            NativeRigView* first, NativeRigView* second, int* width, int* height);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_stitch(
            NativeRigView* first, NativeRigView* second, NativeImage* canvas, Dual* dual);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_crop_stitched(
            NativeImage* source, int left, int top, NativeImage* target, Dual* dual);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_world_to_stitched(
            Dual* dual, Xy* world, int count, Xy* stitched);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_stitched_to_world(
            Dual* dual, Xy* stitched, int count, Xy* world);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_calibrate_views(
            int width, int height, NativeTargetView* views, int viewCount, NativeViewsOptions* options,
            ViewsResult* result, Solution* solutions, byte* wrongPoints, byte* wrongViews);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_camera_of_solution(
            Solution* solution, Point* points, int count, int correctedWidth, int correctedHeight,
            Camera* camera, double* rms);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_solution_of_camera(
            Camera* camera, Solution* solution);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_place_view(
            double cornerXw, double cornerYw, float pixel, int width, int height, Camera* camera);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_raw_to_bed(
            Solution* solution, BedPoint* raw, int count, BedPoint* bed);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_bed_bounds(
            Solution* solution, BedPoint* bed, int count, double* bounds);
        [DllImport(Lib, CallingConvention = C)] internal static extern Status fcal_bed_errors(
            Solution* solution, Solution* judged, BedPoint* bed, int count, double* errors);

        internal static string Text(IntPtr utf8)
        {
            int length = 0;
            while (((byte*)utf8)[length] != 0) ++length;
            var bytes = new byte[length];
            Marshal.Copy(utf8, bytes, 0, length);
            return Encoding.UTF8.GetString(bytes);
        }

        // A full path: on Windows the library looks for bare names in the Windows folder.
        internal static byte[] Path(string path)
        {
            if (path == null) throw new ArgumentNullException("path");
            return Encoding.UTF8.GetBytes(System.IO.Path.GetFullPath(path) + "\0");
        }

        // Call it on the thread of the call.
        internal static void Check(Status status)
        {
            if (status == Status.Ok) return;
            string text = Text(fcal_last_error());
            if (status == Status.False) throw new NoResultException(text);
            throw new FcalException(status, text);
        }
    }

    public class FcalException : Exception
    {
        public Status Status { get; private set; }
        internal FcalException(Status status, string text) : base(text) { Status = status; }
    }

    // Well-formed arguments without a result.
    public class NoResultException : FcalException
    {
        internal NoResultException(string text) : base(Status.False, text) { }
    }

    // Views that have no solution. View: the index of the one that it is about, or -1.
    public class NoSolutionException : NoResultException
    {
        public Outcome Outcome { get; private set; }
        public int View { get; private set; }

        internal NoSolutionException(string text, ViewsResult result) : base(text)
        {
            Outcome = result.Outcome;
            View = result.RefusedView;
        }
    }

    // ---- pictures -----------------------------------------------------------------------------------

    // A picture in memory of the host: 8, 24 or 32 bits per pixel, rows `stride` bytes apart.
    public sealed class Picture
    {
        public readonly int Width, Height, Bits, Stride;
        public readonly byte[] Pixels; // null for memory outside the managed heap
        readonly IntPtr data;

        // New: rows from the top, without padding.
        public Picture(int width, int height, int bits)
            : this(new byte[checked(width * (bits / 8) * height)], width, height, bits, 0) { }

        // A negative stride: the array begins with the bottom row. 0: with the top row, without padding.
        public Picture(byte[] pixels, int width, int height, int bits, int stride)
        {
            if (pixels == null) throw new ArgumentNullException("pixels");
            Pixels = pixels;
            Width = width;
            Height = height;
            Bits = bits;
            Stride = stride != 0 ? stride : width * (bits / 8);
            if (width < 1 || height < 1 || BytesTo(height - 1) + (long)width * (bits / 8) > pixels.Length)
                throw new ArgumentException("empty, or the array is too short", "pixels");
        }

        // Memory that stays where it is while the object is used: data is the first byte of the top row, and
        // stride leads to the row below, as Scan0 and Stride of BitmapData.
        public Picture(IntPtr data, int width, int height, int bits, int stride)
        {
            this.data = data;
            Width = width;
            Height = height;
            Bits = bits;
            Stride = stride;
        }

        long BytesTo(int row) { return Math.Abs((long)Stride) * row; }

        internal Pinned Pin() { return new Pinned(this); }

        // The C picture, and the array held in place until Dispose.
        internal sealed class Pinned : IDisposable
        {
            internal NativeImage Image;
            readonly GCHandle handle;

            internal Pinned(Picture picture)
            {
                Image.Data = picture.data;
                Image.Width = picture.Width;
                Image.Height = picture.Height;
                Image.Stride = picture.Stride;
                Image.Bits = picture.Bits;
                if (picture.Pixels == null) return;
                handle = GCHandle.Alloc(picture.Pixels, GCHandleType.Pinned);
                long top = picture.Stride < 0 ? picture.BytesTo(picture.Height - 1) : 0;
                Image.Data = new IntPtr(handle.AddrOfPinnedObject().ToInt64() + top);
            }

            public void Dispose() { if (handle.IsAllocated) handle.Free(); }
        }
    }

    // One camera of a pair.
    public sealed class RigView
    {
        public Picture Frame;
        public Camera Camera;
        public Point[] Points;

        internal Pinned Pin(string name)
        {
            if (Frame == null) throw new ArgumentException("Frame is null", name);
            if (Points == null) throw new ArgumentException("Points is null", name);
            return new Pinned(this);
        }

        internal sealed class Pinned : IDisposable
        {
            internal NativeRigView View;
            readonly Picture.Pinned frame;
            readonly GCHandle camera, points;

            internal Pinned(RigView view)
            {
                View.Count = view.Points.Length;
                frame = view.Frame.Pin();
                camera = GCHandle.Alloc(view.Camera, GCHandleType.Pinned); // a copy
                points = GCHandle.Alloc(view.Points, GCHandleType.Pinned);
                View.Frame = frame.Image;
                View.Camera = camera.AddrOfPinnedObject();
                View.Points = points.AddrOfPinnedObject();
            }

            public void Dispose()
            {
                points.Free();
                camera.Free();
                frame.Dispose();
            }
        }
    }

    // ---- several views ------------------------------------------------------------------------------

    public sealed class ViewsOptions
    {
        public Noise Noise;
        public bool NoPrior, KeepAll;
        public double StartFocalFactor;
        public Solution? HeldLens;
    }

    public sealed class ViewsCalibration
    {
        public ViewsResult Result;
        public Solution[] Solutions; // one per view
        public bool[][] WrongPoints; // per view and point
        public bool[] WrongViews;
    }

    // xw = A x + B y + E, yw = C x + D y + F
    public struct Affine
    {
        public double A, B, C, D, E, F;
        public double ErrorX, ErrorY;
    }

    // ---- the operations -----------------------------------------------------------------------------

    public static unsafe partial class Fcal
    {
        public static string Version { get { return Native.Text(Native.fcal_version()); } }

        public static string TextOf(Status status) { return Native.Text(Native.fcal_status_text(status)); }

        // Fills the reprojection and the error of every point.
        public static Camera Calibrate(int width, int height, Point[] points, int correctedWidth,
                                       int correctedHeight, out double rms)
        {
            NotNull(points, "points");
            var camera = new Camera();
            double error;
            fixed (Point* p = points)
                Native.Check(Native.fcal_calibrate(width, height, p, points.Length, correctedWidth, correctedHeight,
                                                   &camera, &error));
            rms = error;
            return camera;
        }

        public static void SaveCamera(string path, Camera camera)
        {
            fixed (byte* p = Native.Path(path)) Native.Check(Native.fcal_save_camera(p, &camera));
        }

        public static Camera LoadCamera(string path)
        {
            Camera camera;
            fixed (byte* p = Native.Path(path)) Native.Check(Native.fcal_load_camera(p, &camera));
            return camera;
        }

        public static void SaveDual(string path, Dual dual)
        {
            fixed (byte* p = Native.Path(path)) Native.Check(Native.fcal_save_dual(p, &dual));
        }

        public static Dual LoadDual(string path)
        {
            Dual dual;
            fixed (byte* p = Native.Path(path)) Native.Check(Native.fcal_load_dual(p, &dual));
            return dual;
        }

        // The mask may be null.
        public static void Correct(Picture frame, Camera camera, Picture view, Picture mask)
        {
            NotNull(frame, "frame");
            NotNull(view, "view");
            using (var from = frame.Pin())
            using (var to = view.Pin())
            using (var flags = mask == null ? null : mask.Pin())
            {
                NativeImage f = from.Image, v = to.Image, m = flags == null ? new NativeImage() : flags.Image;
                Native.Check(Native.fcal_correct(&f, &camera, &v, flags == null ? null : &m));
            }
        }

        public static void Crop(Picture source, Picture target)
        {
            NotNull(source, "source");
            NotNull(target, "target");
            using (var from = source.Pin())
            using (var to = target.Pin())
            {
                NativeImage s = from.Image, t = to.Image;
                Native.Check(Native.fcal_crop(&s, &t));
            }
        }

        public static Xy[] WorldToRaw(Camera camera, Xyz[] world)
        {
            NotNull(world, "world");
            var raw = new Xy[world.Length];
            fixed (Xyz* p = world) fixed (Xy* q = raw)
                Native.Check(Native.fcal_world_to_raw(&camera, p, world.Length, q));
            return raw;
        }

        public static Xy[] WorldToCorrected(Camera camera, float cx, float cy, Xyz[] world)
        {
            NotNull(world, "world");
            var corrected = new Xy[world.Length];
            fixed (Xyz* p = world) fixed (Xy* q = corrected)
                Native.Check(Native.fcal_world_to_corrected(&camera, cx, cy, p, world.Length, q));
            return corrected;
        }

        public static Xy[] WorldToView(Camera camera, float cx, float cy, Xy[] world)
        {
            NotNull(world, "world");
            var view = new Xy[world.Length];
            fixed (Xy* p = world) fixed (Xy* q = view)
                Native.Check(Native.fcal_world_to_view(&camera, cx, cy, p, world.Length, q));
            return view;
        }

        public static Xy[] ViewToWorld(Camera camera, float cx, float cy, Xy[] view)
        {
            NotNull(view, "view");
            var world = new Xy[view.Length];
            fixed (Xy* p = view) fixed (Xy* q = world)
                Native.Check(Native.fcal_view_to_world(&camera, cx, cy, p, view.Length, q));
            return world;
        }

        public static Xy[] RawToWorld(Camera camera, Xy[] raw)
        {
            NotNull(raw, "raw");
            var world = new Xy[raw.Length];
            fixed (Xy* p = raw) fixed (Xy* q = world)
                Native.Check(Native.fcal_raw_to_world(&camera, p, raw.Length, q));
            return world;
        }

        public static Xy[] RawToCorrected(Camera camera, float cx, float cy, Xy[] raw)
        {
            NotNull(raw, "raw");
            var corrected = new Xy[raw.Length];
            fixed (Xy* p = raw) fixed (Xy* q = corrected)
                Native.Check(Native.fcal_raw_to_corrected(&camera, cx, cy, p, raw.Length, q));
            return corrected;
        }

        public static Affine FitAffine(Point[] points)
        {
            NotNull(points, "points");
            var k = stackalloc double[6];
            var fit = new Affine();
            fixed (Point* p = points)
                Native.Check(Native.fcal_fit_affine(p, points.Length, k, &fit.ErrorX, &fit.ErrorY));
            fit.A = k[0]; fit.B = k[1]; fit.C = k[2]; fit.D = k[3]; fit.E = k[4]; fit.F = k[5];
            return fit;
        }

        public static void Straighten(Point[] points)
        {
            NotNull(points, "points");
            fixed (Point* p = points) Native.Check(Native.fcal_straighten(p, points.Length));
        }

        public static void CommonPoints(Point[] first, Point[] second, int idCount, out Point[] common1,
                                        out Point[] common2)
        {
            NotNull(first, "first");
            NotNull(second, "second");
            common1 = new Point[first.Length];
            common2 = new Point[second.Length];
            int needed1, needed2;
            fixed (Point* p1 = first) fixed (Point* p2 = second) fixed (Point* q1 = common1) fixed (Point* q2 = common2)
                Native.Check(Native.fcal_common_points(p1, first.Length, p2, second.Length, idCount, q1, first.Length,
                                                       &needed1, q2, second.Length, &needed2));
            Array.Resize(ref common1, needed1);
            Array.Resize(ref common2, needed2);
        }

        public static void StitchedSize(RigView first, RigView second, out int width, out int height)
        {
            NotNull(first, "first");
            NotNull(second, "second");
            int w, h;
            using (var pinned1 = first.Pin("first"))
            using (var pinned2 = second.Pin("second"))
            {
                NativeRigView a = pinned1.View, b = pinned2.View;
                Native.Check(Native.fcal_stitched_size(&a, &b, &w, &h));
            }
            width = w;
            height = h;
        }

        public static Dual Stitch(RigView first, RigView second, Picture canvas)
        {
            NotNull(first, "first");
            NotNull(second, "second");
            NotNull(canvas, "canvas");
            var dual = new Dual();
            using (var pinned1 = first.Pin("first"))
            using (var pinned2 = second.Pin("second"))
            using (var target = canvas.Pin())
            {
                NativeRigView a = pinned1.View, b = pinned2.View;
                NativeImage image = target.Image;
                Native.Check(Native.fcal_stitch(&a, &b, &image, &dual));
            }
            return dual;
        }

        // Returns the record of the target.
        public static Dual CropStitched(Picture source, int left, int top, Picture target, Dual dual)
        {
            NotNull(source, "source");
            NotNull(target, "target");
            using (var from = source.Pin())
            using (var to = target.Pin())
            {
                NativeImage s = from.Image, t = to.Image;
                Native.Check(Native.fcal_crop_stitched(&s, left, top, &t, &dual));
            }
            return dual;
        }

        public static Xy[] WorldToStitched(Dual dual, Xy[] world)
        {
            NotNull(world, "world");
            var stitched = new Xy[world.Length];
            fixed (Xy* p = world) fixed (Xy* q = stitched)
                Native.Check(Native.fcal_world_to_stitched(&dual, p, world.Length, q));
            return stitched;
        }

        public static Xy[] StitchedToWorld(Dual dual, Xy[] stitched)
        {
            NotNull(stitched, "stitched");
            var world = new Xy[stitched.Length];
            fixed (Xy* p = stitched) fixed (Xy* q = world)
                Native.Check(Native.fcal_stitched_to_world(&dual, p, stitched.Length, q));
            return world;
        }

        // The options may be null.
        public static ViewsCalibration CalibrateViews(int width, int height, Point[][] views, ViewsOptions options)
        {
            NotNull(views, "views");
            int total = 0;
            for (int j = 0; j < views.Length; ++j)
            {
                if (views[j] == null) throw new ArgumentException("views[" + j + "] is null", "views");
                total += views[j].Length;
            }
            var wrongPoints = new byte[total];
            var wrongViews = new byte[views.Length];
            var targets = new NativeTargetView[views.Length];
            var handles = new GCHandle[views.Length];
            var solved = new ViewsCalibration { Solutions = new Solution[views.Length] };
            var result = new ViewsResult { Size = sizeof(ViewsResult) };
            var held = new Solution();
            var given = new NativeViewsOptions { Size = sizeof(NativeViewsOptions) };
            if (options != null)
            {
                given.Noise = options.Noise;
                given.NoPrior = options.NoPrior ? 1 : 0;
                given.KeepAll = options.KeepAll ? 1 : 0;
                given.StartFocalFactor = options.StartFocalFactor;
                held = options.HeldLens.GetValueOrDefault();
                if (options.HeldLens.HasValue) given.HeldLens = (IntPtr)(&held);
            }
            try
            {
                for (int j = 0; j < views.Length; ++j)
                {
                    handles[j] = GCHandle.Alloc(views[j], GCHandleType.Pinned);
                    targets[j].Points = handles[j].AddrOfPinnedObject();
                    targets[j].Count = views[j].Length;
                }
                fixed (NativeTargetView* t = targets) fixed (Solution* s = solved.Solutions)
                fixed (byte* wp = wrongPoints) fixed (byte* wv = wrongViews)
                {
                    Status status = Native.fcal_calibrate_views(width, height, t, views.Length, &given, &result, s,
                                                                wp, wv);
                    if (status == Status.False)
                        throw new NoSolutionException(Native.Text(Native.fcal_last_error()), result);
                    Native.Check(status);
                }
            }
            finally
            {
                foreach (GCHandle handle in handles) if (handle.IsAllocated) handle.Free();
            }
            solved.Result = result;
            solved.WrongViews = Array.ConvertAll(wrongViews, flag => flag != 0);
            solved.WrongPoints = new bool[views.Length][];
            for (int j = 0, at = 0; j < views.Length; at += views[j++].Length)
            {
                solved.WrongPoints[j] = new bool[views[j].Length];
                for (int i = 0; i < views[j].Length; ++i) solved.WrongPoints[j][i] = wrongPoints[at + i] != 0;
            }
            return solved;
        }

        // Fills the reprojection and the error of every point.
        public static Camera CameraOf(Solution solution, Point[] points, int correctedWidth, int correctedHeight,
                                      out double rms)
        {
            NotNull(points, "points");
            var camera = new Camera();
            double error;
            fixed (Point* p = points)
                Native.Check(Native.fcal_camera_of_solution(&solution, p, points.Length, correctedWidth,
                                                            correctedHeight, &camera, &error));
            rms = error;
            return camera;
        }

        public static Solution SolutionOf(Camera camera)
        {
            Solution solution;
            Native.Check(Native.fcal_solution_of_camera(&camera, &solution));
            return solution;
        }

        // Returns the record whose view shows the bed from the corner.
        public static Camera PlaceView(double cornerXw, double cornerYw, float pixel, int width, int height,
                                       Camera camera)
        {
            Native.Check(Native.fcal_place_view(cornerXw, cornerYw, pixel, width, height, &camera));
            return camera;
        }

        public static BedPoint[] RawToBed(Solution solution, BedPoint[] raw)
        {
            NotNull(raw, "raw");
            var bed = new BedPoint[raw.Length];
            fixed (BedPoint* p = raw) fixed (BedPoint* q = bed)
                Native.Check(Native.fcal_raw_to_bed(&solution, p, raw.Length, q));
            return bed;
        }

        public static double[] BedBounds(Solution solution, BedPoint[] bed)
        {
            NotNull(bed, "bed");
            var bounds = new double[bed.Length];
            fixed (BedPoint* p = bed) fixed (double* q = bounds)
                Native.Check(Native.fcal_bed_bounds(&solution, p, bed.Length, q));
            return bounds;
        }

        public static double[] BedErrors(Solution solution, Solution judged, BedPoint[] bed)
        {
            NotNull(bed, "bed");
            var errors = new double[bed.Length];
            fixed (BedPoint* p = bed) fixed (double* q = errors)
                Native.Check(Native.fcal_bed_errors(&solution, &judged, p, bed.Length, q));
            return errors;
        }

        static void NotNull(object argument, string name)
        {
            if (argument == null) throw new ArgumentNullException(name);
        }
    }

#if FISHEYE_CALIBRATION_SPANS
    // The same into memory of the caller: at least as many results as points; those beyond stay.
    public static unsafe partial class Fcal
    {
        public static Camera Calibrate(int width, int height, Span<Point> points, int correctedWidth,
                                       int correctedHeight, out double rms)
        {
            var camera = new Camera();
            double error;
            fixed (Point* p = &MemoryMarshal.GetReference(points))
                Native.Check(Native.fcal_calibrate(width, height, p, points.Length, correctedWidth, correctedHeight,
                                                   &camera, &error));
            rms = error;
            return camera;
        }

        public static void WorldToRaw(Camera camera, ReadOnlySpan<Xyz> world, Span<Xy> raw)
        {
            FitsInto(world.Length, raw.Length, "raw");
            fixed (Xyz* p = &MemoryMarshal.GetReference(world)) fixed (Xy* q = &MemoryMarshal.GetReference(raw))
                Native.Check(Native.fcal_world_to_raw(&camera, p, world.Length, q));
        }

        public static void WorldToCorrected(Camera camera, float cx, float cy, ReadOnlySpan<Xyz> world,
                                            Span<Xy> corrected)
        {
            FitsInto(world.Length, corrected.Length, "corrected");
            fixed (Xyz* p = &MemoryMarshal.GetReference(world)) fixed (Xy* q = &MemoryMarshal.GetReference(corrected))
                Native.Check(Native.fcal_world_to_corrected(&camera, cx, cy, p, world.Length, q));
        }

        public static void WorldToView(Camera camera, float cx, float cy, ReadOnlySpan<Xy> world, Span<Xy> view)
        {
            FitsInto(world.Length, view.Length, "view");
            fixed (Xy* p = &MemoryMarshal.GetReference(world)) fixed (Xy* q = &MemoryMarshal.GetReference(view))
                Native.Check(Native.fcal_world_to_view(&camera, cx, cy, p, world.Length, q));
        }

        public static void ViewToWorld(Camera camera, float cx, float cy, ReadOnlySpan<Xy> view, Span<Xy> world)
        {
            FitsInto(view.Length, world.Length, "world");
            fixed (Xy* p = &MemoryMarshal.GetReference(view)) fixed (Xy* q = &MemoryMarshal.GetReference(world))
                Native.Check(Native.fcal_view_to_world(&camera, cx, cy, p, view.Length, q));
        }

        public static void RawToWorld(Camera camera, ReadOnlySpan<Xy> raw, Span<Xy> world)
        {
            FitsInto(raw.Length, world.Length, "world");
            fixed (Xy* p = &MemoryMarshal.GetReference(raw)) fixed (Xy* q = &MemoryMarshal.GetReference(world))
                Native.Check(Native.fcal_raw_to_world(&camera, p, raw.Length, q));
        }

        public static void RawToCorrected(Camera camera, float cx, float cy, ReadOnlySpan<Xy> raw, Span<Xy> corrected)
        {
            FitsInto(raw.Length, corrected.Length, "corrected");
            fixed (Xy* p = &MemoryMarshal.GetReference(raw)) fixed (Xy* q = &MemoryMarshal.GetReference(corrected))
                Native.Check(Native.fcal_raw_to_corrected(&camera, cx, cy, p, raw.Length, q));
        }

        public static void WorldToStitched(Dual dual, ReadOnlySpan<Xy> world, Span<Xy> stitched)
        {
            FitsInto(world.Length, stitched.Length, "stitched");
            fixed (Xy* p = &MemoryMarshal.GetReference(world)) fixed (Xy* q = &MemoryMarshal.GetReference(stitched))
                Native.Check(Native.fcal_world_to_stitched(&dual, p, world.Length, q));
        }

        public static void StitchedToWorld(Dual dual, ReadOnlySpan<Xy> stitched, Span<Xy> world)
        {
            FitsInto(stitched.Length, world.Length, "world");
            fixed (Xy* p = &MemoryMarshal.GetReference(stitched)) fixed (Xy* q = &MemoryMarshal.GetReference(world))
                Native.Check(Native.fcal_stitched_to_world(&dual, p, stitched.Length, q));
        }

        public static void RawToBed(Solution solution, ReadOnlySpan<BedPoint> raw, Span<BedPoint> bed)
        {
            FitsInto(raw.Length, bed.Length, "bed");
            fixed (BedPoint* p = &MemoryMarshal.GetReference(raw))
            fixed (BedPoint* q = &MemoryMarshal.GetReference(bed))
                Native.Check(Native.fcal_raw_to_bed(&solution, p, raw.Length, q));
        }

        public static void BedBounds(Solution solution, ReadOnlySpan<BedPoint> bed, Span<double> bounds)
        {
            FitsInto(bed.Length, bounds.Length, "bounds");
            fixed (BedPoint* p = &MemoryMarshal.GetReference(bed))
            fixed (double* q = &MemoryMarshal.GetReference(bounds))
                Native.Check(Native.fcal_bed_bounds(&solution, p, bed.Length, q));
        }

        public static void BedErrors(Solution solution, Solution judged, ReadOnlySpan<BedPoint> bed,
                                     Span<double> errors)
        {
            FitsInto(bed.Length, errors.Length, "errors");
            fixed (BedPoint* p = &MemoryMarshal.GetReference(bed))
            fixed (double* q = &MemoryMarshal.GetReference(errors))
                Native.Check(Native.fcal_bed_errors(&solution, &judged, p, bed.Length, q));
        }

        static void FitsInto(int points, int results, string name)
        {
            if (results < points) throw new ArgumentException("fewer results than points", name);
        }
    }
#endif
}
