#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/KRResult.h"
#include "platform/KRString.h"
#include "platform/KRText.h"

/// An open database file. The first failure stays until it is taken, and while there is one every further statement
/// does nothing: a sequence of statements is written as if nothing could fail, and asked once in the end.
///
/// Whoever uses it holds `lock`.
class KRSQLiteDatabase {
 public:
  explicit KRSQLiteDatabase(KRText path) : path_(path.view()) {}
  ~KRSQLiteDatabase() { sqlite3_close_v2(handle_); }
  KRSQLiteDatabase(const KRSQLiteDatabase&) = delete;
  KRSQLiteDatabase& operator=(const KRSQLiteDatabase&) = delete;

  /// Opens the file, which must be there. Waits a few seconds for other programs in this and every later statement.
  void open();
  /// Runs statements that give no rows.
  void run(const char* statements);
  /// The only number that a statement gives; 0 where it gives none.
  int64_t number(const char* statement);

  bool isOk() const noexcept { return !failure_; }
  /// The first failure since the last call, or success.
  KRResult<void> take();
  void fail(KRErrorCode code, std::string_view reason);
  void failWith(int code);

  /// How many rows the last statement changed, and the row that it put in.
  int64_t changes() const noexcept { return sqlite3_changes64(handle_); }
  int64_t lastRow() const noexcept { return sqlite3_last_insert_rowid(handle_); }

  const std::string& path() const noexcept { return path_; }
  sqlite3* handle() const noexcept { return handle_; }

  std::mutex lock;

 private:
  std::string path_;
  sqlite3* handle_ = nullptr;
  std::optional<KRError> failure_;
};

/// One statement, with its parameters bound in order, to be run any number of times.
class KRSQLiteStatement {
 public:
  KRSQLiteStatement(KRSQLiteDatabase& database, std::string_view text);
  ~KRSQLiteStatement() { sqlite3_finalize(statement_); }
  KRSQLiteStatement(const KRSQLiteStatement&) = delete;
  KRSQLiteStatement& operator=(const KRSQLiteStatement&) = delete;

  /// The next parameter. The bytes of texts must stay until the statement has run. A text of nothing is no value.
  KRSQLiteStatement& bind(int64_t number);
  KRSQLiteStatement& bind(KRText text);
  KRSQLiteStatement& bindBytes(std::string_view bytes);

  /// Goes to the next row; false when there is none, and then the statement can be bound again.
  bool next();
  /// Runs a statement that gives no rows.
  void run() {
    while (next()) {
    }
  }

  int64_t number(int column) const { return sqlite3_column_int64(statement_, column); }
  /// Valid until the next row. Nothing for no value.
  KRText text(int column) const;
  std::string_view bytes(int column) const;

 private:
  KRSQLiteDatabase& database_;
  sqlite3_stmt* statement_ = nullptr;
  int bound_ = 0;
};

/// A transaction that is undone unless it is committed. A writing one waits for other writers when it starts, so that
/// nothing in it has to be tried again.
class KRSQLiteTransaction {
 public:
  enum class Kind { Reading, Writing };
  KRSQLiteTransaction(KRSQLiteDatabase& database, Kind kind);
  ~KRSQLiteTransaction();
  KRSQLiteTransaction(const KRSQLiteTransaction&) = delete;
  KRSQLiteTransaction& operator=(const KRSQLiteTransaction&) = delete;

  /// Ends it with everything done; false, and everything is undone, when anything in it failed.
  bool commit();

 private:
  KRSQLiteDatabase& database_;
};
