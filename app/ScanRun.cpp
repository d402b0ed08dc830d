#include "app/ScanRun.h"

#include <future>
#include <memory>

#include "app/JsonWriter.h"
#include "app/ScanDocument.h"
#include "issues/KRIssueFindControl.h"

namespace {

/// Hands the result over to the thread that waits for it.
class Waiter : public KRIssueFindControlDelegate {
 public:
  void KRIssueFindControlDelegate_FindEnd(const KRRef<KRIssueFindResult>& result,
                                          KRIssueFindControl& /*findControl*/) override {
    result_.set_value(result);
  }

  KRRef<KRIssueFindResult> wait() { return result_.get_future().get(); }

 private:
  std::promise<KRRef<KRIssueFindResult>> result_;
};

class ProgressListener : public Waiter {
 public:
  explicit ProgressListener(ProgressBar& bar) : bar_(bar) {}

  void KRIssueFindControlDelegate_Finding(double progress, KRIssueFindControl& /*findControl*/) override {
    bar_.show("Scanning", progress);
  }

 private:
  ProgressBar& bar_;
};

/// One line of JSON: an event by its name, with whatever `addMore` adds.
template <class More>
void writeEvent(Output& out, std::string_view name, More addMore) {
  JsonWriter json(out, JsonWriter::Layout::OneLine);
  json.beginObject();
  json.key("event");
  json.text(name);
  addMore(json);
  json.endObject();
  json.endDocument();
}

/// Writes on the run's thread, in the order of the calls, while the main thread waits.
class EventListener : public Waiter {
 public:
  explicit EventListener(Output& out) : out_(out) {}

  void KRIssueFindControlDelegate_FindStart(KRIssueFindControl& /*findControl*/) override {
    writeEvent(out_, "start", [](JsonWriter&) {});
  }

  void KRIssueFindControlDelegate_Finding(double progress, KRIssueFindControl& /*findControl*/) override {
    writeEvent(out_, "finding", [progress](JsonWriter& json) {
      json.key("progress");
      json.number(progress);
    });
  }

 private:
  Output& out_;
};

KRRef<KRIssueFindResult> runAndWait(const KRRef<KRAddressBook>& book, const std::shared_ptr<Waiter>& listener) {
  const KRRef<KRIssueFindControl> control = KRIssueFindControl::initWithAddressBook(book);
  control->setDelegate(listener);
  control->startFind();
  return listener->wait();
}

}  // namespace

KRRef<KRIssueFindResult> ScanRun::withProgress(const KRRef<KRAddressBook>& book, ProgressBar& progress) {
  return runAndWait(book, std::make_shared<ProgressListener>(progress));
}

KRRef<KRIssueFindResult> ScanRun::withEvents(const KRRef<KRAddressBook>& book, const KRStringList& scanned,
                                             Output& out) {
  KRRef<KRIssueFindResult> result = runAndWait(book, std::make_shared<EventListener>(out));
  writeEvent(out, "end", [&](JsonWriter& json) {
    json.key("result");
    ScanDocument::write(json, *result, scanned);
  });
  return result;
}
