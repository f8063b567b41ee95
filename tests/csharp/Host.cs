// The calls of host.c from C#, with the same output.
using System;
using System.IO;
using FisheyeCalibration;

static class Host
{
    const int Width = 160, Height = 120, Columns = 7, Rows = 5;
    const float CentreX = Width / 2, CentreY = Height / 2;

    static readonly Xy[] Plane = { new Xy(0, 0), new Xy(10, 20.5f), new Xy(-30, 40), new Xy(300, 7) };
    static readonly Xy[] Raw = { new Xy(80, 60), new Xy(20.5f, 70), new Xy(100, 110), new Xy(0, 0) };

    // ---- input ----

    static Camera KnownCamera(float ry)
    {
        return new Camera { Fx = 51.25f, Fy = 51.25f, U0 = 80.5f, V0 = 59.25f, K0 = 0.02, K1 = -0.03, Rx = 0.25f,
                            Ry = ry, Tx = -150, Ty = -100, Tz = 200 };
    }

    static Xyz[] World()
    {
        var world = new Xyz[Columns * Rows];
        for (int i = 0; i < world.Length; ++i) world[i] = new Xyz(50 * (i % Columns), 50 * (i / Columns), 0);
        return world;
    }

    static Point[] See(Camera camera)
    {
        Xyz[] world = World();
        var raw = new Xy[world.Length];
        if (Print.Did("fcal_world_to_raw", () => raw = Mapping.WorldToRaw(camera, world))) Print.Show("xy", raw);
        var points = new Point[world.Length];
        for (int i = 0; i < points.Length; ++i)
        {
            points[i] = new Point { Id = i + 1, Reserved2 = -i, Xw = world[i].X, Yw = world[i].Y,
                                    X = raw[i].X, Y = raw[i].Y };
        }
        return points;
    }

    static Picture NewPicture(int width, int height, int bits, int padding, bool bottomUp)
    {
        int row = width * (bits / 8) + padding;
        var bytes = new byte[row * height];
        for (int i = 0; i < bytes.Length; ++i) bytes[i] = (byte)(i * 31 + i / 97);
        return new Picture(bytes, width, height, bits, bottomUp ? -row : row);
    }

    static T[] Part<T>(T[] all, int from, int count)
    {
        var part = new T[count];
        Array.Copy(all, from, part, 0, count);
        return part;
    }

    // ---- calls ----

    static void Texts()
    {
        Print.Line("fcal_version " + Fcal.Version);
        for (int status = -1; status <= 6; ++status) Print.Line("fcal_status_text " + Fcal.TextOf((Status)status));
    }

    static Camera Calibrate(Point[] points)
    {
        var camera = new Camera();
        double rms = 0;
        Print.Did("fcal_calibrate", () => Fcal.Calibrate(Width, Height, Part(points, 0, 8), Width, Height, out rms));
        Print.Did("fcal_calibrate", () => Fcal.Calibrate(0, Height, points, Width, Height, out rms));
        if (Print.Did("fcal_calibrate", () => camera = Mapping.Calibrate(Width, Height, points, out rms)))
        {
            Print.ShowRecords(camera);
            Print.ShowRecords(points);
            Print.Show("rms", new[] { rms });
        }
        if (Print.Did("fcal_place_view", () => camera = Fcal.PlaceView(-10.5, 5, 1.25f, Width, Height, camera)))
            Print.ShowRecords(camera);
        var fit = new Affine();
        if (Print.Did("fcal_fit_affine", () => fit = Fcal.FitAffine(points)))
        {
            Print.Show("k", new[] { fit.A, fit.B, fit.C, fit.D, fit.E, fit.F });
            Print.Show("error", new[] { fit.ErrorX, fit.ErrorY });
        }
        Print.Did("fcal_fit_affine", () => Fcal.FitAffine(new Point[0]));
        Print.Did("fcal_straighten", () => Fcal.Straighten(new Point[0]));
        return camera;
    }

    static void Keep(Camera camera)
    {
        string path = "\u6807\u5B9A \u00E9.ini";
        var dual = new Dual { Pixel = 0.25f, Width = 400, Height = 300, DatumX = -7, DatumY = 9, DatumXw = 12,
                              DatumYw = -3 };
        Print.Did("fcal_save_camera", () => Fcal.SaveCamera(path, camera));
        Print.Did("fcal_save_dual", () => Fcal.SaveDual(path, dual));
        Print.Show("file", File.ReadAllBytes(path));
        if (Print.Did("fcal_load_camera", () => camera = Fcal.LoadCamera(path))) Print.ShowRecords(camera);
        if (Print.Did("fcal_load_dual", () => dual = Fcal.LoadDual(path))) Print.ShowRecords(dual);
        Print.Did("fcal_save_camera", () => Fcal.SaveCamera("missing/camera.ini", camera));
        Print.Did("fcal_load_dual", () => Fcal.LoadDual("missing.ini"));
    }

    static void Render(Camera camera)
    {
        Picture frame = NewPicture(Width, Height, 24, 5, false);
        Picture view = NewPicture(Width, Height, 24, 0, true);
        Picture mask = NewPicture(Width, Height, 8, 0, false);
        Picture part = NewPicture(100, 80, 24, 0, false);
        if (Print.Did("fcal_correct", () => Fcal.Correct(frame, camera, view, mask)))
        {
            Print.Show("view", view.Pixels);
            Print.Show("mask", mask.Pixels);
        }
        if (Print.Did("fcal_correct", () => Fcal.Correct(frame, camera, part, null))) Print.Show("view", part.Pixels);
        Print.Did("fcal_correct", () => Fcal.Correct(frame, camera, mask, null));
        if (Print.Did("fcal_crop", () => Fcal.Crop(view, part))) Print.Show("part", part.Pixels);
    }

    static void Map(Camera camera)
    {
        Xy[] xy = null;
        if (Print.Did("fcal_world_to_corrected",
                      () => xy = Mapping.WorldToCorrected(camera, CentreX, CentreY, World())))
            Print.Show("xy", xy);
        if (Print.Did("fcal_world_to_view", () => xy = Mapping.WorldToView(camera, CentreX, CentreY, Plane)))
            Print.Show("xy", xy);
        if (Print.Did("fcal_view_to_world", () => xy = Mapping.ViewToWorld(camera, CentreX, CentreY, Plane)))
            Print.Show("xy", xy);
        if (Print.Did("fcal_raw_to_world", () => xy = Mapping.RawToWorld(camera, Raw))) Print.Show("xy", xy);
        if (Print.Did("fcal_raw_to_corrected", () => xy = Mapping.RawToCorrected(camera, CentreX, CentreY, Raw)))
            Print.Show("xy", xy);
        Print.Did("fcal_raw_to_world", () => Mapping.RawToWorld(camera, new Xy[0]));
    }

    static void Stitch(Camera[] cameras, Point[][] points)
    {
        Point[] common1 = null, common2 = null;
        if (Print.Did("fcal_common_points", () => Fcal.CommonPoints(Part(points[0], 0, 20), Part(points[1], 3, 12), 10,
                                                                    out common1, out common2)))
        {
            Print.ShowRecords(common1);
            Print.ShowRecords(common2);
        }
        var views = new RigView[2];
        for (int i = 0; i < 2; ++i)
        {
            views[i] = new RigView { Frame = NewPicture(Width, Height, 8, 0, i == 1), Camera = cameras[i],
                                     Points = points[i] };
        }
        int width = 0, height = 0;
        if (!Print.Did("fcal_stitched_size", () => Fcal.StitchedSize(views[0], views[1], out width, out height)))
            return;
        Print.Line("  " + width + " " + height);
        Picture canvas = NewPicture(width, height, 8, 0, false);
        Picture part = NewPicture(40, 20, 8, 0, true);
        var dual = new Dual();
        if (Print.Did("fcal_stitch", () => dual = Fcal.Stitch(views[0], views[1], canvas)))
        {
            Print.Show("canvas", canvas.Pixels);
            Print.ShowRecords(dual);
        }
        if (Print.Did("fcal_crop_stitched", () => dual = Fcal.CropStitched(canvas, 8, 12, part, dual)))
        {
            Print.Show("part", part.Pixels);
            Print.ShowRecords(dual);
        }
        Xy[] xy = null;
        if (Print.Did("fcal_world_to_stitched", () => xy = Mapping.WorldToStitched(dual, Plane))) Print.Show("xy", xy);
        if (Print.Did("fcal_stitched_to_world", () => xy = Mapping.StitchedToWorld(dual, Plane))) Print.Show("xy", xy);
        views[1].Points = new Point[0];
        Print.Did("fcal_stitched_size", () => Fcal.StitchedSize(views[0], views[1], out width, out height));
    }

    static int Main(string[] arguments)
    {
        string wanted = arguments.Length == 1 ? arguments[0] : "";
        if (wanted == "layout")
        {
            Print.Layouts();
            return 0;
        }
        if (wanted == "checks") return Checks.Run();
        if (wanted != "calls") return 1;
        Texts();
        var cameras = new Camera[2];
        var points = new Point[2][];
        for (int i = 0; i < 2; ++i)
        {
            points[i] = See(KnownCamera(i == 0 ? -0.2f : 0.15f));
            cameras[i] = Calibrate(points[i]);
        }
        Keep(cameras[0]);
        Render(cameras[0]);
        Map(cameras[0]);
        Stitch(cameras, points);
        Views.Solve(points[0], points[1], Width, Height);
        return 0;
    }
}
