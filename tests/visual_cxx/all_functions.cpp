// Calls of all 21 functions, whose outputs are recorded with their every byte.
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "host.h"

namespace host {
namespace {

typedef std::vector<unsigned char> Bytes;

const float kUntouched = 12345.5f;

void recordPoints(const char* name, const Points& points) {
  record(name, points.data(), points.size() * sizeof(CalibrationPoint));
}

FishEyeCalibrationParam calibrated() {
  Points points = targetPoints(13, 9);
  FishEyeCalibrationParam camera = FishEyeCalibrationParam();
  double rms = -1;
  SingleCamCalibration(nullptr, 640, 480, 24, points, 640, 480, camera, rms);
  return camera;
}

void calibrate(const char* name, int columns, int rows) {
  Points points = targetPoints(columns, rows);
  FishEyeCalibrationParam camera = FishEyeCalibrationParam();
  double rms = -1;
  std::srand(7);
  const bool result = SingleCamCalibration(nullptr, 640, 480, 24, points, 640, 480, camera, rms);
  recordValue(name, result);
  recordValue("record", camera);
  recordValue("error", rms);
  recordPoints("points", points);
  recordValue("rand() afterwards", std::rand());
}

void tooFewPoints() { calibrate("eight points", 4, 2); }

void collinearPoints() {
  Points points = targetPoints(13, 9);
  for (std::size_t i = 0; i < points.size(); ++i) points[i].Yw = points[i].ImagePtY = 100;
  FishEyeCalibrationParam camera = FishEyeCalibrationParam();
  double rms = -1;
  try {
    recordValue("a line of points",
                SingleCamCalibration(nullptr, 640, 480, 8, points, 640, 480, camera, rms));
  } catch (const std::exception& error) {
    recordText("a line of points", error.what());
  }
  recordPoints("points", points);
  recordValue("record", camera);
  recordValue("error", rms);
}

void keepRecords() {
  const FishEyeCalibrationParam camera = calibrated();
  DualFishEyeCalibrationParam dual = {0.25f, 4000, 3000, -20, 70, 12.75f, -3.5f};
  recordValue("save", SaveCalibrationParam("./visual_cxx.ini", camera));
  recordValue("save", SaveDualCamerasCalibrationParam("./visual_cxx.ini", dual));
  FishEyeCalibrationParam read = FishEyeCalibrationParam();
  DualFishEyeCalibrationParam readDual = DualFishEyeCalibrationParam();
  recordValue("load", LoadCalibrationParam("./visual_cxx.ini", read));
  recordValue("load", LoadDualCamerasCalibrationParam("./visual_cxx.ini", readDual));
  recordValue("camera", read);
  recordValue("dual", readDual);
  recordFile("file", "./visual_cxx.ini");
  recordValue("load", LoadCalibrationParam("./missing.ini", read));
  recordValue("camera", read);
  recordValue("null path", SaveCalibrationParam(nullptr, camera));
}

void mapPoints() {
  const FishEyeCalibrationParam camera = calibrated();
  const DualFishEyeCalibrationParam dual = {0.25f, 4000, 3000, -20, 70, 12.75f, -3.5f};
  Numbers numbers(11);
  for (int i = 0; i < 50; ++i) {
    const float X = numbers.between(-500, 900);
    const float Y = numbers.between(-500, 900);
    const float Z = numbers.between(-50, 50);
    float to[3] = {kUntouched, kUntouched, kUntouched};
    recordValue("1", RawImageToCorrectedImagePoint(X, Y, camera, to[0], to[1]));
    recordValue("to", to);
    recordValue("2", WorldToRawImagePoint(X, Y, Z, camera, to[0], to[1]));
    recordValue("to", to);
    recordValue("3", WorldToCorrectedImagePoint(X, Y, Z, camera, 320, 240, to[0], to[1]));
    recordValue("to", to);
    recordValue("4", WorldToSecondCorrectedImagePoint(X, Y, Z, camera, 320, 240, to[0], to[1]));
    recordValue("to", to);
    recordValue("5", RawImageToWorldPoint(X, Y, camera, to[0], to[1], to[2]));
    recordValue("to", to);
    recordValue("6", CorrectedImageToWorldPoint(X, Y, 320, 240, camera, to[0], to[1], to[2]));
    recordValue("to", to);
    recordValue("7", DualCam_WorldToSecondCorrectedImagePoint(X, Y, Z, dual, to[0], to[1]));
    recordValue("to", to);
    recordValue("8", DualCam_CorrectedImageToWorldPoint(X, Y, dual, to[0], to[1], to[2]));
    recordValue("to", to);
  }
}

Bytes randomPixels(std::size_t count, std::uint32_t seed) {
  Numbers numbers(seed);
  Bytes pixels(count);
  for (std::size_t i = 0; i < count; ++i) pixels[i] = static_cast<unsigned char>(numbers.next());
  return pixels;
}

void renderPictures() {
  const FishEyeCalibrationParam camera = calibrated();
  for (int bits = 8; bits <= 32; bits += 8) {
    const std::size_t bytes = static_cast<std::size_t>(bits / 8);
    Bytes frame = randomPixels(640 * 480 * bytes, 3);
    Bytes view(500 * 300 * bytes);
    Bytes mask(500 * 300);
    recordValue("view", SingleCamCorrected(frame.data(), 640, 480, bits, camera, view.data(), 500,
                                           300, mask.data()));
    record("pixels", view.data(), view.size());
    record("mask", mask.data(), mask.size());
    CroppingImage(frame.data(), 640, 480, bits, view.data(), 500, 300);
    record("cropped", view.data(), view.size());
    DualFishEyeCalibrationParam dual = {0.25f, 640, 480, 20, 70, 12.75f, -3.5f};
    DualCam_CroppingImage(frame.data(), 640, 480, bits, 40, 24, dual, view.data(), 500, 300);
    record("cropped canvas", view.data(), view.size());
    recordValue("dual", dual);
  }
}

void badCrop() {
  unsigned char pixel = 9;
  DualFishEyeCalibrationParam dual = {0.25f, 640, 480, 20, 70, 12.75f, -3.5f};
  DualCam_CroppingImage(&pixel, 1, 1, 8, 0, 0, dual, &pixel, 642, 480);
  recordValue("dual", dual);
}

void registerPlanes() {
  for (int columns = 2; columns <= 13; columns += 11) {
    double params[6] = {1, 2, 3, 4, 5, 6};
    double errorX = -1;
    double errorY = -1;
    recordValue("affine", HandEyeCalibration(targetPoints(columns, columns == 2 ? 2 : 9), params,
                                             errorX, errorY));
    recordValue("params", params);
    recordValue("error x", errorX);
    recordValue("error y", errorY);
    recordFile("pairs", "D:/Affine.txt");
  }
  double values[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  const Points four = targetPoints(2, 2);
  Points three;
  for (std::size_t i = 0; i < 3; ++i) three.push_back(four[i]);
  recordValue("no points",
              GetPerspectiveTransformationParam(Points(), values, values[6], values[7]));
  for (int count = 3; count <= 4; ++count) {  // too few, and without the input picture
    try {
      recordValue("perspective", GetPerspectiveTransformationParam(count == 3 ? three : four,
                                                                   values, values[6], values[7]));
    } catch (const std::exception& error) {
      recordText("perspective", error.what());
    }
  }
  recordValue("values", values);
}

// A bitmap of 32 x 24 pixels for the perspective aid.
void writePicture() {
  Bytes file(54 + 32 * 24 * 3);
  const unsigned char header[] = {'B', 'M', 54, 9,  0, 0, 0, 0,  0, 0, 54, 0, 0, 0, 40,
                                  0,   0,   0,  32, 0, 0, 0, 24, 0, 0, 0,  1, 0, 24};
  for (std::size_t i = 0; i < file.size(); ++i) {
    file[i] = i < sizeof header ? header[i] : static_cast<unsigned char>(i < 54 ? 0 : 7 * i);
  }
  std::FILE* const picture = std::fopen("D:/CorrectedImage.bmp", "wb");
  std::fwrite(file.data(), 1, file.size(), picture);
  std::fclose(picture);
}

void straighten() {
  double values[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  try {
    recordValue("straightened", GetPerspectiveTransformationParam(targetPoints(2, 2), values,
                                                                  values[6], values[7]));
  } catch (const std::exception& error) {
    recordText("straightened", error.what());
  }
  recordValue("values", values);
}

void shareAndStitch() {
  Points left = targetPoints(13, 9);
  Points right = targetPoints(12, 8);
  right.push_back(right[3]);  // three times in both
  Points common1(2, left[0]);
  Points common2;
  GetCommonPoints(left, right, 90, common1, common2);
  recordPoints("common 1", common1);
  recordPoints("common 2", common2);
  GetCommonPoints(left, right, 90, common2, common2);  // in one list
  recordPoints("common", common2);

  const FishEyeCalibrationParam camera = calibrated();
  FishEyeCalibrationParam other = camera;
  other.DatumPtXw += 60;
  for (int bits = 8; bits <= 32; bits += 24) {
    Bytes image1 = randomPixels(static_cast<std::size_t>(640 * 480 * bits / 8), 5);
    Bytes image2 = randomPixels(static_cast<std::size_t>(640 * 480 * bits / 8), 6);
    ImageLong width = 5;
    ImageLong height = 6;
    int canvasBits = 7;
    recordValue("size",
                ComputeStitchedImageSize(image1.data(), 640, 480, bits, camera, left, image2.data(),
                                         640, 480, bits, other, left, width, height, canvasBits));
    recordValue("width", width);
    recordValue("height", height);
    recordValue("bits", canvasBits);
    recordFile("left", "D:/LeftCorrectedImage.bmp");
    Bytes canvas(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                     static_cast<std::size_t>(bits / 8),
                 3);
    DualFishEyeCalibrationParam dual = {1, 2, 3, 4, 5, 6, 7};
    recordValue("stitched", FishEyeImageStitching(image1.data(), 640, 480, bits, camera, left,
                                                  image2.data(), 640, 480, bits, other, left,
                                                  canvas.data(), width, height, canvasBits, dual));
    record("canvas", canvas.data(), canvas.size());
    recordValue("dual", dual);
    recordFile("left", "D:/LeftCorrectedImage.bmp");
    recordFile("left mask", "D:/LeftMaskImage.bmp");
    recordFile("right", "D:/RightCorrectedImage.bmp");
    recordFile("right mask", "D:/RightMaskImage.bmp");
    recordFile("stitched", "D:/DImage.bmp");
    recordValue("no common points",
                FishEyeImageStitching(image1.data(), 640, 480, bits, camera, left, image2.data(),
                                      640, 480, bits, other, Points(), canvas.data(), width, height,
                                      canvasBits, dual));
  }
}

}  // namespace

void callAllFunctions() {
  calibrate("117 points", 13, 9);
  calibrate("9 points", 3, 3);
  collinearPoints();
  recordMessages("message", tooFewPoints);
  recordMessages("message", badCrop);
  keepRecords();
  mapPoints();
  renderPictures();
  registerPlanes();
  writePicture();
  recordWindow("window", straighten);
  std::remove("D:/CorrectedImage.bmp");
  recordDigest("straightened", "D:/CorrectedImage2.bmp");
  shareAndStitch();
}

}  // namespace host
