// State, events and actions.
#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

#include "base/failure.h"
#include "base/text.h"
#include "page/routes.h"

namespace fisheye_calibration::program {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kBetweenEvents{100};
constexpr milliseconds kAlive{2000};

// What one page has been told.
class EventStream {
 public:
  explicit EventStream(Service& service)
      : service_(service), counted_(service.eventStreams), told_(service.engine.sourceCount()) {}

  bool tooMany() const { return counted_.number() > kMostEventStreams; }

  // Waits for news and returns them as events.
  std::string next() {
    const auto snapshot = service_.engine.snapshotAfter(number_, kAlive);
    std::string events;
    if (snapshot.number != number_) {
      number_ = snapshot.number;
      events +=
          "event: state\nid: " + std::to_string(number_) + "\ndata: " + *snapshot.text + "\n\n";
    }
    const std::vector<Engine::Points> points = service_.engine.points();
    for (std::size_t i = 0; i < points.size(); ++i) {
      if (points[i].number != told_[i]) {
        told_[i] = points[i].number;
        events += "event: points\ndata: " + points[i].text + "\n\n";
      }
    }
    const auto now = Clock::now();
    if (now - alive_ >= kAlive) {
      alive_ = now;
      events += "event: alive\ndata: {}\n\n";
    }
    return events;
  }

 private:
  Service& service_;
  Counted counted_;
  std::uint64_t number_ = 0;
  std::vector<std::uint64_t> told_;
  Clock::time_point alive_;
};

void answerEvents(Service& service, httplib::Response& response) {
  const auto stream = std::make_shared<EventStream>(service);
  if (stream->tooMany()) {
    answerError(response, {503, "busy", "too many pages are open; close one"});
    return;
  }
  response.set_chunked_content_provider(
      "text/event-stream", [stream, &service](std::size_t, httplib::DataSink& sink) {
        if (service.engine.stopped()) {
          return false;
        }
        try {
          const std::string events = stream->next();
          if (!events.empty() && !sink.write(events.data(), events.size())) {
            return false;
          }
        } catch (const std::exception&) {  // such as no memory: the page asks again
          return false;
        }
        std::this_thread::sleep_for(kBetweenEvents);
        return true;
      });
}

}  // namespace

void answerError(httplib::Response& response, const Refusal& refusal) {
  response.status = refusal.status;
  const nlohmann::json body = {{"error", {{"code", refusal.code}, {"text", refusal.text}}}};
  response.set_content(body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace),
                       "application/json");
}

void answerJson(httplib::Response& response, const std::string& text) {
  response.set_content(text, "application/json");
}

httplib::Server::Handler guarded(httplib::Server::Handler handler) {
  return
      [handler = std::move(handler)](const httplib::Request& request, httplib::Response& response) {
        try {
          handler(request, response);
        } catch (const Failure& failure) {
          const bool bad = failure.code() == kExitBadInput;
          answerError(response,
                      {bad ? 400 : 409, bad ? "badRequest" : "refused", onOneLine(failure.what())});
        } catch (const std::bad_alloc&) {
          answerError(response, {409, "refused", "there is not enough memory"});
        } catch (const std::exception& failure) {
          answerError(response, {409, "refused", onOneLine(failure.what())});
        }
      };
}

std::optional<double> queryNumber(const httplib::Request& request, const char* name, double least,
                                  double most) {
  const auto count = request.params.count(name);
  if (count == 0) {
    return std::nullopt;
  }
  const std::optional<double> value = parseNumber(request.params.find(name)->second);
  if (count > 1 || !value || !(*value >= least && *value <= most)) {
    failBadInput(std::string(name) + " is not a number from " + general(least, 7) + " to " +
                 general(most, 7));
  }
  return value;
}

std::size_t querySource(const httplib::Request& request, const Service& service) {
  const double last = static_cast<double>(service.engine.sourceCount()) - 1;
  const double source = queryNumber(request, "source", 0, last).value_or(0);
  return source < 1 ? 0 : 1;
}

void addStateRoutes(httplib::Server& server, Service& service) {
  server.Get("/api/state", guarded([&service](const auto&, auto& response) {
               answerJson(response, *service.engine.snapshot().text);
             }));
  server.Get("/api/events",
             guarded([&service](const auto&, auto& response) { answerEvents(service, response); }));
  server.Post("/api/actions", guarded([&service](const auto& request, auto& response) {
                const Action action = parseAction(request.body, service.engine.sourceCount());
                const std::uint64_t number = service.engine.apply(action);
                answerJson(response, nlohmann::json({{"ok", true}, {"number", number}}).dump());
              }));
}

}  // namespace fisheye_calibration::program
