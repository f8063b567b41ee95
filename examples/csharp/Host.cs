// A host in C#: calibrates a camera from one view of a target, keeps it in a file, renders the bed as seen
// from above and finds out which point of the bed a pixel shows.
using System;
using FisheyeCalibration;

static class Host
{
    const int Width = 1280, Height = 960;
    // Instead of detecting a target in a picture: where a known camera sees points that are 30 mm apart.
    static Point[] FindTarget()
    {
        var known = new Camera { Fx = 410, Fy = 410, U0 = 645, V0 = 474, K0 = 0.02, K1 = -0.03, Rx = 0.3f,
                                 Ry = -0.2f, Tx = -150, Ty = -120, Tz = 200 };
        var points = new Point[99];
        for (int i = 0; i < points.Length; ++i)
        {
            points[i] = new Point { Id = i + 1, Xw = 30 * (i % 11), Yw = 30 * (i / 11) };
            Xy seen = Fcal.WorldToRaw(known, new[] { new Xyz(points[i].Xw, points[i].Yw, 0) })[0];
            points[i].X = seen.X; points[i].Y = seen.Y;
        }
        return points;
    }

    static void Main() // failures are exceptions with the library's text
    {
        double rms; // of the reprojection, pixels
        Camera camera = Fcal.Calibrate(Width, Height, FindTarget(), Width, Height, out rms);
        // The view shows 320 x 240 mm of the bed, a quarter of a millimetre per pixel.
        Fcal.SaveCamera("camera.ini", Fcal.PlaceView(-10, 0, 0.25f, Width, Height, camera));
        camera = Fcal.LoadCamera("camera.ini");
        Console.WriteLine("focal length {0:F1} px, reprojection error {1:F3} px", camera.Fx, rms);

        var frame = new Picture(Width, Height, 24); // of the camera
        var view = new Picture(Width, Height, 24);
        for (int i = 0; i < frame.Pixels.Length; ++i) frame.Pixels[i] = 128;
        Fcal.Correct(frame, camera, view, null);
        Xy bed = Fcal.RawToWorld(camera, new[] { new Xy(700, 400) })[0];
        Console.WriteLine("pixel (700, 400) shows ({0:F1}, {1:F1}) mm", bed.X, bed.Y);
    }
}
