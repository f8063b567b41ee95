// The calls that concern several views.
using FisheyeCalibration;

static class Views
{
    static readonly BedPoint[] Grid = { new BedPoint(0, 0), new BedPoint(100.5, 20), new BedPoint(300, 200),
                                        new BedPoint(-40, 1e4) };
    static readonly BedPoint[] Raw = { new BedPoint(80, 60), new BedPoint(20.5, 70), new BedPoint(100, 110),
                                       new BedPoint(0, 0) };

    static ViewsCalibration Calibrate(Point[][] views, int width, int height, ViewsOptions options)
    {
        ViewsCalibration solved = null;
        NoSolutionException failure = null;
        bool isSolved = Print.Did("fcal_calibrate_views", () => {
            try
            {
                solved = Fcal.CalibrateViews(width, height, views, options);
            }
            catch (NoSolutionException found)
            {
                failure = found;
                throw;
            }
        });
        if (isSolved)
        {
            Print.ShowRecords(solved.Result);
            Print.ShowRecords(solved.Solutions);
            Print.ShowFlags("points", solved.WrongPoints);
            Print.ShowFlags("views", new[] { solved.WrongViews });
        }
        else if (failure != null)
        {
            Print.Show("outcome", new[] { (int)failure.Outcome });
            Print.Show("view", new[] { failure.View });
        }
        return solved;
    }

    static void Judge(Solution solution, Solution judged)
    {
        BedPoint[] bed = null;
        double[] values = null;
        if (Print.Did("fcal_raw_to_bed", () => bed = Mapping.RawToBed(solution, Raw))) Print.Show("xy", bed);
        if (Print.Did("fcal_bed_bounds", () => values = Mapping.BedBounds(solution, Grid)))
            Print.Show("bounds", values);
        if (Print.Did("fcal_bed_errors", () => values = Mapping.BedErrors(solution, judged, Grid)))
            Print.Show("errors", values);
    }

    public static void Solve(Point[] first, Point[] second, int width, int height)
    {
        first[4].X += 9; // a wrong point
        ViewsCalibration both = Calibrate(new[] { first, second }, width, height, null);

        var options = new ViewsOptions { Noise = Noise.White, KeepAll = true, StartFocalFactor = 1.1,
                                         HeldLens = both.Solutions[0] };
        Calibrate(new[] { second }, width, height, options);
        options.HeldLens = null;
        options.NoPrior = true;
        Calibrate(new[] { first, second }, width, height, options);
        options.Noise = (Noise)7;
        Calibrate(new[] { first, second }, width, height, options);
        Calibrate(new[] { new[] { first[0], first[1], first[2] }, second }, width, height, null);

        var camera = new Camera();
        double rms = 0;
        if (Print.Did("fcal_camera_of_solution",
                      () => camera = Fcal.CameraOf(both.Solutions[1], second, width, height, out rms)))
        {
            Print.ShowRecords(camera);
            Print.ShowRecords(second);
            Print.Show("rms", new[] { rms });
        }
        var copy = new Solution();
        if (Print.Did("fcal_solution_of_camera", () => copy = Fcal.SolutionOf(camera))) Print.ShowRecords(copy);
        Judge(both.Solutions[0], both.Solutions[1]);
        both.Solutions[1].Alpha = 0.5;
        Print.Did("fcal_camera_of_solution",
                  () => Fcal.CameraOf(both.Solutions[1], second, width, height, out rms));
    }
}
