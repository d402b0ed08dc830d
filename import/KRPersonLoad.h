#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "import/KRPersonLoadDelegate.h"
#include "import/KRPersonLoadNote.h"
#include "platform/KRAtomic.h"
#include "platform/KRObject.h"
#include "platform/KRString.h"

/// Reads the persons of a contacts file on a thread of its own and hands them one by one, with progress, to a listener.
/// It stores nothing. This class reads vCards; `loadWithFile` makes the loader for each kind of file.
///
/// The text of the file is in memory once while a run goes on; persons are made one after the other and kept by nobody
/// but the listener. Failures are silent: an unreadable file has a start and an end and nothing between. A host that
/// wants reasons sets a sink for notes.
///
/// Threads: every operation may be called from any thread. The listener is held until it is replaced, so a host that
/// owns the loader and is its own listener makes a cycle: it sets the listener to nothing when it is done.
class KRPersonLoad : public KRObject {
 public:
  using Delegate = KRPersonLoadDelegate;

  /// The values of `state`.
  static constexpr int32_t kCreated = 0;
  static constexpr int32_t kLoading = 1;
  static constexpr int32_t kEnded = 2;

  /// Whether the path's extension is, in any case, one that there is a loader for: "vcf", "vcard" or "csv" (written
  /// form: `isSupportFile:`). False for no path.
  static bool isSupportFile(const KRString& path);
  /// The loader for the path's extension, or nothing: for no path, another extension, and where `initWithFile` gives
  /// nothing (written form: `loadWithFile:`).
  static KRRef<KRPersonLoad> loadWithFile(const KRString& path);
  /// A loader of vCards, whatever the file's name; nothing without a path and when there is no such file or it is a
  /// folder (written form: `initWithFile:`).
  static KRRef<KRPersonLoad> initWithFile(const KRString& path);
  ~KRPersonLoad() override;

  /// 0 created, 1 loading, 2 stopped or ended.
  int32_t state() const noexcept;
  const KRString& filePath() const noexcept { return filePath_; }

  std::shared_ptr<Delegate> delegate() const { return delegate_.get(); }
  void setDelegate(std::shared_ptr<Delegate> delegate) { delegate_.set(std::move(delegate)); }

  /// Anything of the host's own; the loader never looks at it.
  KRRef<KRObject> extend() const { return extend_.get(); }
  void setExtend(KRRef<KRObject> extend) { extend_.set(std::move(extend)); }

  /// Where the run that is started next tells what it passes over, or nothing. Asking for notes costs a second look at
  /// each card.
  KRPersonLoadNoteSink notes() const { return notes_.get(); }
  void setNotes(KRPersonLoadNoteSink notes) { notes_.set(std::move(notes)); }

  /// Starts a run from the beginning of the file on a new detached thread, which keeps the loader alive, and returns at
  /// once. Ignored while loading; a loader that was stopped or has ended starts again. False only when the system gives
  /// no thread: then nothing runs and the listener hears nothing.
  bool start();
  /// Ends the run soon: no person is handed over after the current one. Does not wait; the end comes on the run's
  /// thread. Ignored when not loading.
  void stop();

  /// A run on the calling thread: the start, the reading, the end. It delivers persons only while the state is 1, so
  /// `start` is what a host calls.
  void loadThreed();
  /// Another reader of vCards, which takes whatever `KRVCardReader` finds in the whole file, on the calling thread. It
  /// tells no total and does not look at the state. Kept for hosts that want it; nothing starts it.
  void loadThreed2();

  // The listener's calls, made when there is a listener (written forms: `sendNumber:`, `sendProgress:person:`).

  void sendStart();
  void sendNumber(int64_t total);
  void sendProgress(double progress, const KRRef<IKRPerson>& person);
  /// Sets the state to 2, whatever it was, and then calls the listener.
  void sendEnd();

  /// The text from the first "BEGIN:VCARD", in exactly this case, to its end; the text as it is when there is none
  /// (written form: `standBengin:`). A view of the text given; nothing for nothing.
  static KRText standBengin(KRText text) noexcept;

 protected:
  /// One run of a loader, by which it knows whether it has been stopped: a run that was stopped stays stopped although
  /// the loader may have been started again meanwhile.
  class Run {
   public:
    /// Whether the run goes on.
    bool isLoading() const noexcept { return loader_.progress_.load() == whileLoading_; }

   private:
    friend class KRPersonLoad;
    Run(KRPersonLoad& loader, uint64_t whileLoading) noexcept : loader_(loader), whileLoading_(whileLoading) {}

    KRPersonLoad& loader_;
    /// What `progress_` is for as long as the run goes on.
    uint64_t whileLoading_;
  };

  /// A loader of the file; no path reads as an empty file.
  explicit KRPersonLoad(KRString filePath) : filePath_(std::move(filePath)) {}
  template <class T, class... Arguments>
  friend KRRef<T> krMake(Arguments&&...);

  /// Whether there is something at the path that a loader can be made for.
  static bool isFile(const KRString& path) noexcept;

  /// The reading step between start and end: a loader of another kind of file replaces it and calls `sendNumber` and
  /// `sendProgress`. Called on the run's thread.
  virtual void readPersons(const Run& run);

  /// Tells the host that asked for notes.
  void note(const KRPersonLoadNote& note) const;

 private:
  void load(const Run& run);
  void noteCard(std::string_view card, size_t line, size_t number, bool isRead) const;

  KRString filePath_;
  KRAtomic<std::shared_ptr<Delegate>> delegate_;
  KRAtomic<KRRef<KRObject>> extend_;
  KRAtomic<KRPersonLoadNoteSink> notes_;
  /// The number of the run in the upper half, `loadState` in the lower: both change in one step.
  std::atomic<uint64_t> progress_{kCreated};
};
