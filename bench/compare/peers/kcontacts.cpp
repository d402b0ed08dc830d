// KContacts: a file to a list of addressees; names, phones, e-mails and addresses of each are read once.
//
//     kcontacts FILE

#include <KContacts/Addressee>
#include <KContacts/VCardConverter>
#include <QFile>
#include <chrono>
#include <cstdio>
#include <cstdlib>

int main(int count, char** words) {
  const auto start = std::chrono::steady_clock::now();
  QFile file(QString::fromLocal8Bit(count == 2 ? words[1] : ""));
  if (!file.open(QIODevice::ReadOnly)) return 1;
  const QByteArray data = file.readAll();
  const KContacts::Addressee::List contacts = KContacts::VCardConverter().parseVCards(data);
  qint64 chars = 0;
  qint64 phones = 0;
  qint64 emails = 0;
  qint64 addresses = 0;
  for (const auto& contact : contacts) {
    chars += contact.formattedName().size() + contact.givenName().size() + contact.familyName().size();
    for (const auto& phone : contact.phoneNumbers()) chars += phone.number().size(), ++phones;
    for (const auto& email : contact.emails()) chars += email.size(), ++emails;
    for (const auto& address : contact.addresses()) chars += address.street().size(), ++addresses;
  }
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  printf(
      "{\"seconds\":%.4f,\"bytes\":%lld,\"contacts\":%d,\"phones\":%lld,\"emails\":%lld,\"addresses\":%lld,\"chars\":%"
      "lld}\n",
      seconds, static_cast<long long>(data.size()), static_cast<int>(contacts.size()), phones, emails, addresses,
      chars);
  // Letting go of the objects is not what is measured.
  std::_Exit(fflush(stdout));
}
