// Null and arrays and spans that are too short are refused by their names, before the library is called.
using System;
using FisheyeCalibration;

static partial class Checks
{
    // Exactly this exception with the name of the parameter.
    static void ExpectNamed<Expected>(string name, string method, Action call) where Expected : ArgumentException
    {
        string found = "nothing";
        try
        {
            call();
        }
        catch (Exception thrown)
        {
            var named = thrown as Expected;
            found = thrown.GetType().Name + (named == null ? "" : " for " + named.ParamName);
        }
        string expected = typeof(Expected).Name + " for " + name;
        Expect(found == expected, method + ": " + found + " rather than " + expected);
    }

    static void ExpectNull(string name, string method, Action call)
    {
        ExpectNamed<ArgumentNullException>(name, method, call);
    }

    static readonly Picture Small = new Picture(8, 8, 8);
    static readonly Point[] Points = new Point[4];

    static void NullArrays()
    {
        var camera = new Camera();
        var dual = new Dual();
        var solution = new Solution();
        double rms;
        Point[] common1, common2;
        Point[] noPoints = null;
        ExpectNull("points", "Calibrate", () => Fcal.Calibrate(8, 8, noPoints, 8, 8, out rms));
        ExpectNull("points", "CameraOf", () => Fcal.CameraOf(solution, null, 8, 8, out rms));
        ExpectNull("points", "FitAffine", () => Fcal.FitAffine(null));
        ExpectNull("points", "Straighten", () => Fcal.Straighten(null));
        ExpectNull("first", "CommonPoints", () => Fcal.CommonPoints(null, Points, 4, out common1, out common2));
        ExpectNull("second", "CommonPoints", () => Fcal.CommonPoints(Points, null, 4, out common1, out common2));
        ExpectNull("world", "WorldToRaw", () => Fcal.WorldToRaw(camera, null));
        ExpectNull("world", "WorldToCorrected", () => Fcal.WorldToCorrected(camera, 4, 4, null));
        ExpectNull("world", "WorldToView", () => Fcal.WorldToView(camera, 4, 4, null));
        ExpectNull("view", "ViewToWorld", () => Fcal.ViewToWorld(camera, 4, 4, null));
        ExpectNull("raw", "RawToWorld", () => Fcal.RawToWorld(camera, null));
        ExpectNull("raw", "RawToCorrected", () => Fcal.RawToCorrected(camera, 4, 4, null));
        ExpectNull("world", "WorldToStitched", () => Fcal.WorldToStitched(dual, null));
        ExpectNull("stitched", "StitchedToWorld", () => Fcal.StitchedToWorld(dual, null));
        ExpectNull("raw", "RawToBed", () => Fcal.RawToBed(solution, null));
        ExpectNull("bed", "BedBounds", () => Fcal.BedBounds(solution, null));
        ExpectNull("bed", "BedErrors", () => Fcal.BedErrors(solution, solution, null));
        ExpectNull("views", "CalibrateViews", () => Fcal.CalibrateViews(8, 8, null, null));
        ExpectNamed<ArgumentException>("views", "CalibrateViews",
                                       () => Fcal.CalibrateViews(8, 8, new[] { Points, null }, null));
        ExpectNull("path", "SaveCamera", () => Fcal.SaveCamera(null, camera));
        ExpectNull("path", "LoadCamera", () => Fcal.LoadCamera(null));
        ExpectNull("path", "SaveDual", () => Fcal.SaveDual(null, dual));
        ExpectNull("path", "LoadDual", () => Fcal.LoadDual(null));
    }

    static void NullPictures()
    {
        var camera = new Camera();
        var rig = new RigView { Frame = Small, Points = Points };
        var noFrame = new RigView { Points = Points };
        var noPoints = new RigView { Frame = Small };
        int width, height;
        ExpectNull("pixels", "Picture", () => new Picture(null, 8, 8, 8, 0));
        ExpectNull("frame", "Correct", () => Fcal.Correct(null, camera, Small, null));
        ExpectNull("view", "Correct", () => Fcal.Correct(Small, camera, null, null));
        ExpectNull("source", "Crop", () => Fcal.Crop(null, Small));
        ExpectNull("target", "Crop", () => Fcal.Crop(Small, null));
        ExpectNull("source", "CropStitched", () => Fcal.CropStitched(null, 0, 0, Small, new Dual()));
        ExpectNull("target", "CropStitched", () => Fcal.CropStitched(Small, 0, 0, null, new Dual()));
        ExpectNull("first", "StitchedSize", () => Fcal.StitchedSize(null, rig, out width, out height));
        ExpectNull("second", "StitchedSize", () => Fcal.StitchedSize(rig, null, out width, out height));
        ExpectNull("first", "Stitch", () => Fcal.Stitch(null, rig, Small));
        ExpectNull("second", "Stitch", () => Fcal.Stitch(rig, null, Small));
        ExpectNull("canvas", "Stitch", () => Fcal.Stitch(rig, rig, null));
        ExpectNamed<ArgumentException>("first", "Stitch", () => Fcal.Stitch(noFrame, rig, Small));
        ExpectNamed<ArgumentException>("second", "Stitch", () => Fcal.Stitch(rig, noPoints, Small));
        ExpectNamed<ArgumentException>("second", "StitchedSize",
                                       () => Fcal.StitchedSize(rig, noFrame, out width, out height));
    }

#if FISHEYE_CALIBRATION_SPANS
    static void ExpectShort(string name, string method, Action call)
    {
        ExpectNamed<ArgumentException>(name, method, call);
    }

    static void ShortSpans()
    {
        var camera = new Camera();
        var solution = new Solution();
        Xyz[] space = new Xyz[3];
        Xy[] plane = new Xy[3], few = new Xy[2];
        BedPoint[] bed = new BedPoint[3];
        ExpectShort("raw", "WorldToRaw", () => Fcal.WorldToRaw(camera, space, few));
        ExpectShort("corrected", "WorldToCorrected", () => Fcal.WorldToCorrected(camera, 4, 4, space, few));
        ExpectShort("view", "WorldToView", () => Fcal.WorldToView(camera, 4, 4, plane, few));
        ExpectShort("world", "ViewToWorld", () => Fcal.ViewToWorld(camera, 4, 4, plane, few));
        ExpectShort("world", "RawToWorld", () => Fcal.RawToWorld(camera, plane, few));
        ExpectShort("corrected", "RawToCorrected", () => Fcal.RawToCorrected(camera, 4, 4, plane, few));
        ExpectShort("stitched", "WorldToStitched", () => Fcal.WorldToStitched(new Dual(), plane, few));
        ExpectShort("world", "StitchedToWorld", () => Fcal.StitchedToWorld(new Dual(), plane, few));
        ExpectShort("bed", "RawToBed", () => Fcal.RawToBed(solution, bed, new BedPoint[2]));
        ExpectShort("bounds", "BedBounds", () => Fcal.BedBounds(solution, bed, new double[2]));
        ExpectShort("errors", "BedErrors", () => Fcal.BedErrors(solution, solution, bed, new double[2]));

        var longer = new Xy[] { new Xy(1, 1), new Xy(1, 1), new Xy(1, 1), new Xy(7, 8) };
        Fcal.WorldToStitched(new Dual { Pixel = 0.5f }, plane, longer);
        Expect(longer[2].X == 0 && longer[3].X == 7 && longer[3].Y == 8, "what is beyond the results stays");
    }
#endif
}
