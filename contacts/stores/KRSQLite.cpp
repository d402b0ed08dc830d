#include "contacts/stores/KRSQLite.h"

#include "platform/KRFile.h"

namespace {

/// How long a statement waits for another program that is writing.
constexpr int kPatienceInMilliseconds = 5000;

KRErrorCode codeOf(int code) noexcept {
  switch (code & 0xFF) {
    case SQLITE_FULL:
      return KRErrorCode::NoSpace;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return KRErrorCode::Busy;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return KRErrorCode::Damaged;
    case SQLITE_PERM:
    case SQLITE_READONLY:
    case SQLITE_AUTH:
      return KRErrorCode::NotAllowed;
    case SQLITE_TOOBIG:
    case SQLITE_NOMEM:
      return KRErrorCode::TooLarge;
    default:
      return KRErrorCode::Failed;
  }
}

}  // namespace

void KRSQLiteDatabase::open() {
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  if (const int code = sqlite3_open_v2(path_.c_str(), &handle_, flags, nullptr); code != SQLITE_OK) {
    failWith(code);
    return;
  }
  sqlite3_busy_timeout(handle_, kPatienceInMilliseconds);
  // The file may come from anybody: nothing in it is run, and no statement can damage it.
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

void KRSQLiteDatabase::run(const char* statements) {
  if (failure_) return;
  if (const int code = sqlite3_exec(handle_, statements, nullptr, nullptr, nullptr); code != SQLITE_OK) failWith(code);
}

int64_t KRSQLiteDatabase::number(const char* statement) {
  KRSQLiteStatement query(*this, statement);
  if (!query.next()) return 0;
  const int64_t number = query.number(0);
  query.run();
  return number;
}

void KRSQLiteDatabase::fail(KRErrorCode code, std::string_view reason) {
  if (failure_) return;
  std::string sentence = krWellFormed(path_);
  failure_ = KRError{code, sentence.append(": ").append(reason)};
}

void KRSQLiteDatabase::failWith(int code) {
  const int number = handle_ == nullptr ? 0 : sqlite3_system_errno(handle_);
  const bool isOfSystem = (code & 0xFF) == SQLITE_IOERR || (code & 0xFF) == SQLITE_CANTOPEN;
  if (isOfSystem && number != 0) {
    if (!failure_) failure_ = KRFile::systemError(number, "use", KRText(std::string_view(path_)));
    return;
  }
  if (codeOf(code) == KRErrorCode::Damaged) {
    const bool isOther = (code & 0xFF) == SQLITE_NOTADB;
    return fail(KRErrorCode::Damaged, isOther ? "this is no database, or a damaged one" : "the database is damaged");
  }
  // The connection's own words say more than the number alone, when they are about that number.
  const bool isLast = handle_ != nullptr && sqlite3_extended_errcode(handle_) == code;
  fail(codeOf(code), isLast ? sqlite3_errmsg(handle_) : sqlite3_errstr(code));
}

KRResult<void> KRSQLiteDatabase::take() {
  if (!failure_) return {};
  KRError error = *std::move(failure_);
  failure_.reset();
  return error;
}

KRSQLiteStatement::KRSQLiteStatement(KRSQLiteDatabase& database, std::string_view text) : database_(database) {
  if (!database_.isOk()) return;
  const int code =
      sqlite3_prepare_v2(database_.handle(), text.data(), static_cast<int>(text.size()), &statement_, nullptr);
  if (code != SQLITE_OK) database_.failWith(code);
}

KRSQLiteStatement& KRSQLiteStatement::bind(int64_t number) {
  if (statement_ != nullptr) sqlite3_bind_int64(statement_, ++bound_, number);
  return *this;
}

KRSQLiteStatement& KRSQLiteStatement::bind(KRText text) {
  if (statement_ == nullptr) return *this;
  if (text.isNothing()) {
    sqlite3_bind_null(statement_, ++bound_);
  } else {
    sqlite3_bind_text64(statement_, ++bound_, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
  }
  return *this;
}

KRSQLiteStatement& KRSQLiteStatement::bindBytes(std::string_view bytes) {
  if (statement_ == nullptr) return *this;
  // A text that is too long for the database is refused here already.
  const int code = sqlite3_bind_blob64(statement_, ++bound_, bytes.data(), bytes.size(), SQLITE_STATIC);
  if (code != SQLITE_OK) database_.failWith(code);
  return *this;
}

bool KRSQLiteStatement::next() {
  if (statement_ == nullptr || !database_.isOk()) return false;
  const int code = sqlite3_step(statement_);
  if (code == SQLITE_ROW) return true;
  if (code != SQLITE_DONE) database_.failWith(code);
  sqlite3_reset(statement_);
  bound_ = 0;
  return false;
}

KRText KRSQLiteStatement::text(int column) const {
  if (sqlite3_column_type(statement_, column) == SQLITE_NULL) return {};
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  if (text == nullptr) return {};
  return {text, static_cast<size_t>(sqlite3_column_bytes(statement_, column))};
}

std::string_view KRSQLiteStatement::bytes(int column) const {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  if (bytes == nullptr) return {};
  return {bytes, static_cast<size_t>(sqlite3_column_bytes(statement_, column))};
}

KRSQLiteTransaction::KRSQLiteTransaction(KRSQLiteDatabase& database, Kind kind) : database_(database) {
  database_.run(kind == Kind::Writing ? "BEGIN IMMEDIATE" : "BEGIN");
}

KRSQLiteTransaction::~KRSQLiteTransaction() {
  // Some failures have undone it already.
  if (database_.handle() != nullptr && sqlite3_get_autocommit(database_.handle()) == 0)
    sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

bool KRSQLiteTransaction::commit() {
  database_.run("COMMIT");
  return database_.isOk();
}
