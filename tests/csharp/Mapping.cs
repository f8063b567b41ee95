// The methods with arrays, or those with spans where they are compiled.
using System;
using FisheyeCalibration;

static class Mapping
{
#if FISHEYE_CALIBRATION_SPANS
    delegate void Map<In, Out>(In[] points, Out[] results);

    static Out[] Mapped<In, Out>(In[] points, Map<In, Out> map)
    {
        var results = new Out[points.Length];
        map(points, results);
        return results;
    }

#endif
    public static Camera Calibrate(int width, int height, Point[] points, out double rms)
    {
#if FISHEYE_CALIBRATION_SPANS
        return Fcal.Calibrate(width, height, new Span<Point>(points), width, height, out rms);
#else
        return Fcal.Calibrate(width, height, points, width, height, out rms);
#endif
    }

#if FISHEYE_CALIBRATION_SPANS
    public static Xy[] WorldToRaw(Camera camera, Xyz[] points)
    {
        return Mapped<Xyz, Xy>(points, (p, q) => Fcal.WorldToRaw(camera, p, q));
    }

    public static Xy[] WorldToCorrected(Camera camera, float cx, float cy, Xyz[] points)
    {
        return Mapped<Xyz, Xy>(points, (p, q) => Fcal.WorldToCorrected(camera, cx, cy, p, q));
    }

    public static Xy[] WorldToView(Camera camera, float cx, float cy, Xy[] points)
    {
        return Mapped<Xy, Xy>(points, (p, q) => Fcal.WorldToView(camera, cx, cy, p, q));
    }

    public static Xy[] ViewToWorld(Camera camera, float cx, float cy, Xy[] points)
    {
        return Mapped<Xy, Xy>(points, (p, q) => Fcal.ViewToWorld(camera, cx, cy, p, q));
    }

    public static Xy[] RawToWorld(Camera camera, Xy[] points)
    {
        return Mapped<Xy, Xy>(points, (p, q) => Fcal.RawToWorld(camera, p, q));
    }

    public static Xy[] RawToCorrected(Camera camera, float cx, float cy, Xy[] points)
    {
        return Mapped<Xy, Xy>(points, (p, q) => Fcal.RawToCorrected(camera, cx, cy, p, q));
    }

    public static Xy[] WorldToStitched(Dual dual, Xy[] points)
    {
        return Mapped<Xy, Xy>(points, (p, q) => Fcal.WorldToStitched(dual, p, q));
    }

    public static Xy[] StitchedToWorld(Dual dual, Xy[] points)
    {
        return Mapped<Xy, Xy>(points, (p, q) => Fcal.StitchedToWorld(dual, p, q));
    }

    public static BedPoint[] RawToBed(Solution solution, BedPoint[] points)
    {
        return Mapped<BedPoint, BedPoint>(points, (p, q) => Fcal.RawToBed(solution, p, q));
    }

    public static double[] BedBounds(Solution solution, BedPoint[] points)
    {
        return Mapped<BedPoint, double>(points, (p, q) => Fcal.BedBounds(solution, p, q));
    }

    public static double[] BedErrors(Solution solution, Solution judged, BedPoint[] points)
    {
        return Mapped<BedPoint, double>(points, (p, q) => Fcal.BedErrors(solution, judged, p, q));
    }

#else
    public static Xy[] WorldToRaw(Camera camera, Xyz[] points)
    {
        return Fcal.WorldToRaw(camera, points);
    }

    public static Xy[] WorldToCorrected(Camera camera, float cx, float cy, Xyz[] points)
    {
        return Fcal.WorldToCorrected(camera, cx, cy, points);
    }

    public static Xy[] WorldToView(Camera camera, float cx, float cy, Xy[] points)
    {
        return Fcal.WorldToView(camera, cx, cy, points);
    }

    public static Xy[] ViewToWorld(Camera camera, float cx, float cy, Xy[] points)
    {
        return Fcal.ViewToWorld(camera, cx, cy, points);
    }

    public static Xy[] RawToWorld(Camera camera, Xy[] points)
    {
        return Fcal.RawToWorld(camera, points);
    }

    public static Xy[] RawToCorrected(Camera camera, float cx, float cy, Xy[] points)
    {
        return Fcal.RawToCorrected(camera, cx, cy, points);
    }

    public static Xy[] WorldToStitched(Dual dual, Xy[] points)
    {
        return Fcal.WorldToStitched(dual, points);
    }

    public static Xy[] StitchedToWorld(Dual dual, Xy[] points)
    {
        return Fcal.StitchedToWorld(dual, points);
    }

    public static BedPoint[] RawToBed(Solution solution, BedPoint[] points)
    {
        return Fcal.RawToBed(solution, points);
    }

    public static double[] BedBounds(Solution solution, BedPoint[] points)
    {
        return Fcal.BedBounds(solution, points);
    }

    public static double[] BedErrors(Solution solution, Solution judged, BedPoint[] points)
    {
        return Fcal.BedErrors(solution, judged, points);
    }
#endif
}
