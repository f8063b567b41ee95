// Live pictures: a page asks for a frame newer than the one it has shown, so that at most one is
// under way to it.
#include <chrono>
#include <cmath>
#include <string>

#include "base/failure.h"
#include "base/frame_buffer.h"
#include "base/text.h"
#include "fisheye_calibration.h"
#include "page/routes.h"

namespace fisheye_calibration::program {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kWait{2000};
constexpr milliseconds kPoll{50};
constexpr double kLargestNumber = 9e15;

std::uint64_t askedAfter(const httplib::Request& request) {
  return static_cast<std::uint64_t>(queryNumber(request, "after", 0, kLargestNumber).value_or(0));
}

PartWish wishOf(const httplib::Request& request, bool parts) {
  PartWish wish;
  wish.columns = static_cast<int>(queryNumber(request, "columns", 16, 4096).value_or(wish.columns));
  if (parts && request.has_param("width")) {
    const auto number = [&](const char* name, double least) {
      const auto value = queryNumber(request, name, least, 1e6);
      if (!value) {
        failBadInput(std::string(name) + " is missing");
      }
      return *value;
    };
    wish.part = cv::Rect2d(number("left", -1e6), number("top", -1e6), number("width", 0.01),
                           number("height", 0.01));
  }
  return wish;
}

double inMilliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

double answerPicture(httplib::Response& response, const EncodedPicture& picture,
                     std::uint64_t number, const Frame& frame) {
  const double age = inMilliseconds(Clock::now() - frame.captured);
  const auto wall =
      std::chrono::duration_cast<milliseconds>(frame.wallClock.time_since_epoch()).count();
  response.set_header("X-Frame", std::to_string(number));
  response.set_header("X-Width", std::to_string(picture.whole.width));
  response.set_header("X-Height", std::to_string(picture.whole.height));
  response.set_header("X-Age", general(age, 4));
  response.set_header("X-Captured", std::to_string(wall));
  response.set_header(
      "X-Part", std::to_string(picture.part.x) + "," + std::to_string(picture.part.y) + "," +
                    std::to_string(picture.part.width) + "," + std::to_string(picture.part.height));
  response.set_content(reinterpret_cast<const char*>(picture.jpeg->data()), picture.jpeg->size(),
                       "image/jpeg");
  return age;
}

cv::Mat correctedPicture(const cv::Mat& raw, const CalibrationOutcome& outcome) {
  if (raw.cols != outcome.request.image.width || raw.rows != outcome.request.image.height) {
    failJob("the camera's picture has another size now; calibrate again");
  }
  FrameBuffer frame = toBuffer(raw);
  const Size size = outcome.chosen.result.corrected;
  FrameBuffer view = blankBuffer(size, frame.bitCount);
  FrameBuffer mask = blankBuffer(size, 8);
  if (!SingleCamCorrected(frame.data(), frame.size.width, frame.size.height, frame.bitCount,
                          outcome.chosen.result.param, view.data(), size.width, size.height,
                          mask.data())) {
    failJob("nothing of the corrected picture is seen");
  }
  return toPicture(view);
}

// A place among the requests that wait; refuses if there is none.
bool tooManyWait(const Counted& counted, httplib::Response& response) {
  if (counted.number() <= kMostFrameRequests) {
    return false;
  }
  answerError(response, {503, "busy", "too many pages are open; close one"});
  return true;
}

std::size_t sourceOf(const httplib::Request& request, const Service& service) {
  const std::size_t source = request.matches[1] == "1" ? 1 : 0;
  if (source >= service.engine.sourceCount()) {
    failBadInput("there is no such source");
  }
  return source;
}

void answerRaw(Service& service, const httplib::Request& request, httplib::Response& response) {
  const Counted counted(service.frameRequests);
  if (tooManyWait(counted, response)) {
    return;
  }
  const std::size_t source = sourceOf(request, service);
  const PartWish wish = wishOf(request, false);
  const FramePointer frame = service.engine.frames(source).newerThan(askedAfter(request), kWait);
  if (!frame) {
    response.status = 204;
    return;
  }
  const EncodedPicture picture =
      service.raw[source].encoded({frame->number, nullptr}, wish, [&] { return frame->picture; });
  service.engine.frameSent(source, answerPicture(response, picture, frame->number, *frame));
}

void answerCorrected(Service& service, const httplib::Request& request,
                     httplib::Response& response) {
  const Counted counted(service.frameRequests);
  if (tooManyWait(counted, response)) {
    return;
  }
  const std::size_t source = sourceOf(request, service);
  const PartWish wish = wishOf(request, true);
  const std::uint64_t after = askedAfter(request);
  const auto outcome = service.engine.outcome(source);
  if (!outcome) {
    failJob("calibrate first");
  }
  const FramePointer frame = service.engine.frames(source).newerThan(after, kWait);
  if (!frame) {
    response.status = 204;
    return;
  }
  const EncodedPicture picture = service.corrected[source].encoded(
      {frame->number, outcome}, wish, [&] { return correctedPicture(frame->picture, *outcome); });
  answerPicture(response, picture, frame->number, *frame);
}

// The stitched picture's number is the sum of its frames' numbers, which grows with each of them.
void answerStitched(Service& service, const httplib::Request& request,
                    httplib::Response& response) {
  const Counted counted(service.frameRequests);
  if (tooManyWait(counted, response)) {
    return;
  }
  const PartWish wish = wishOf(request, true);
  const std::uint64_t after = askedAfter(request);
  const auto stitch = service.engine.stitch();
  if (!stitch) {
    failJob("stitch the cameras first");
  }
  const auto end = Clock::now() + kWait;
  while (Clock::now() < end && !service.engine.stopped()) {
    const FramePointer left = service.engine.frames(0).newest();
    const FramePointer right = service.engine.frames(1).newest();
    if (left && right && left->number + right->number > after) {
      const std::uint64_t number = left->number + right->number;
      const EncodedPicture picture = service.stitched.encoded({number, stitch}, wish, [&] {
        return stitchedPicture(*stitch, left->picture, right->picture);
      });
      answerPicture(response, picture, number, left->captured < right->captured ? *left : *right);
      return;
    }
    service.engine.frames(0).newerThan(left ? left->number : 0, kPoll);
  }
  response.status = 204;
}

}  // namespace

void addFrameRoutes(httplib::Server& server, Service& service) {
  server.Get("/frames/([01])/raw\\.jpg", guarded([&service](const auto& request, auto& response) {
               answerRaw(service, request, response);
             }));
  server.Get("/frames/([01])/corrected\\.jpg",
             guarded([&service](const auto& request, auto& response) {
               answerCorrected(service, request, response);
             }));
  server.Get("/frames/stitched\\.jpg", guarded([&service](const auto& request, auto& response) {
               answerStitched(service, request, response);
             }));
}

}  // namespace fisheye_calibration::program
