// A host in C# with two cameras side by side over one bed: calibrates both, stitches their frames into one
// picture, keeps picture and records in files, and stitches the next frames with the records alone.
using System;
using System.IO;
using FisheyeCalibration;

static class Stitching
{
    const int Width = 640, Height = 480;
    const float Pixel = 0.25f; // mm of the bed per pixel of the stitched picture

    // ---- instead of cameras ----

    // A camera 200 mm above (x, y) of the bed.
    static Camera CameraAt(float x, float y)
    {
        return new Camera { Fx = 205, Fy = 205, U0 = 322, V0 = 237, K0 = 0.02, K1 = -0.03, Rx = 0.05f, Ry = -0.03f,
                            Tx = -x, Ty = -y, Tz = 200 };
    }

    // Where the camera sees points of the bed that are 40 mm apart. A point has the same id for both cameras.
    static Point[] FindTarget(Camera known, int firstColumn)
    {
        var points = new Point[8 * 7];
        for (int i = 0; i < points.Length; ++i)
        {
            int column = firstColumn + i % 8, row = i / 8;
            points[i] = new Point { Id = row * 13 + column + 1, Xw = 40 * column, Yw = 40 * row };
        }
        Xy[] raw = Fcal.WorldToRaw(known, Array.ConvertAll(points, p => new Xyz(p.Xw, p.Yw, 0)));
        for (int i = 0; i < points.Length; ++i) { points[i].X = raw[i].X; points[i].Y = raw[i].Y; }
        return points;
    }

    // A frame of the grey bed, with a bright disc of 15 mm radius at (x, y).
    static Picture TakeFrame(Camera known, float x, float y)
    {
        var frame = new Picture(Width, Height, 8);
        var raw = new Xy[frame.Pixels.Length];
        for (int i = 0; i < raw.Length; ++i) raw[i] = new Xy(i % Width, i / Width);
        Xy[] bed = Fcal.RawToWorld(known, raw);
        for (int i = 0; i < bed.Length; ++i)
        {
            float dx = bed[i].X - x, dy = bed[i].Y - y;
            frame.Pixels[i] = (byte)(dx * dx + dy * dy < 15 * 15 ? 250 : 100);
        }
        return frame;
    }

    // ---- the work of a host ----

    // Fcal.Stitch corrects both frames at twice their size, so the records are made for such views.
    static Camera Calibrate(Point[] points, float x, float y)
    {
        const int width = 2 * Width, height = 2 * Height;
        double rms;
        Camera camera = Fcal.Calibrate(Width, Height, points, width, height, out rms);
        Console.WriteLine("focal length {0:F1} px, reprojection error {1:F3} px", camera.Fx, rms);
        // Both views have the same scale. (x, y) is in the middle: files of stitched pictures hold whole
        // coordinates of it.
        return Fcal.PlaceView(x - 0.5 * (width + 1) * Pixel, y - 0.5 * (height + 1) * Pixel, Pixel, width, height,
                              camera);
    }

    static void ShowDisc(Picture stitched, Dual dual, float x, float y)
    {
        Xy pixel = Fcal.WorldToStitched(dual, new[] { new Xy(x, y) })[0];
        int column = (int)(pixel.X + 0.5f), row = (int)(pixel.Y + 0.5f);
        Console.WriteLine("disc at ({0}, {1}) mm: pixel ({2}, {3}), grey {4}", x, y, column, row,
                          stitched.Pixels[row * stitched.Width + column]);
    }

    // Sets up the machine: records and a first picture.
    static void FirstRun(Camera[] known, Point[][] points)
    {
        var rig = new RigView[2];
        for (int i = 0; i < 2; ++i)
        {
            Camera camera = Calibrate(points[i], i == 0 ? 140 : 340, 120);
            Fcal.SaveCamera("camera" + i + ".ini", camera);
            rig[i] = new RigView { Frame = TakeFrame(known[i], 60, 100), Camera = camera, Points = points[i] };
        }
        int width, height;
        Fcal.StitchedSize(rig[0], rig[1], out width, out height);
        var canvas = new Picture(width, height, 8); // black
        Dual dual = Fcal.Stitch(rig[0], rig[1], canvas);
        Console.WriteLine("stitched picture of {0} x {1} pixels", dual.Width, dual.Height);
        ShowDisc(canvas, dual, 60, 100);
        File.WriteAllBytes("stitched.raw", canvas.Pixels); // a real host writes PNG
        Fcal.SaveDual("stitched.ini", dual);
    }

    // Any later day: needs no calibration, only the files and the target's numbers and positions.
    static void LaterRun(Camera[] known, Point[][] points)
    {
        Dual saved = Fcal.LoadDual("stitched.ini");
        var canvas = new Picture(File.ReadAllBytes("stitched.raw"), saved.Width, saved.Height, 8, 0);
        ShowDisc(canvas, saved, 60, 100);
        var rig = new RigView[2];
        for (int i = 0; i < 2; ++i)
        {
            rig[i] = new RigView { Frame = TakeFrame(known[i], 240, 160), Points = points[i],
                                   Camera = Fcal.LoadCamera("camera" + i + ".ini") };
        }
        Dual dual = Fcal.Stitch(rig[0], rig[1], canvas);
        ShowDisc(canvas, saved, 240, 160); // where both cameras see it
        if (!dual.Equals(saved)) throw new InvalidOperationException("the record has changed: stitching again");
        Console.WriteLine("the saved record holds for the next frames");
    }

    static void Main() // failures are exceptions with the library's text
    {
        var known = new[] { CameraAt(140, 120), CameraAt(340, 120) };
        var points = new[] { FindTarget(known[0], 0), FindTarget(known[1], 5) };
        FirstRun(known, points);
        LaterRun(known, points);
    }
}
