// SPDX-License-Identifier: MIT
#include "tests/unit/update/TestCertificate.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <stdexcept>

namespace vantle::testing_support {

namespace {

QByteArray contents(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) throw std::runtime_error("no certificate was made");
  return file.readAll();
}

void write(const QString& path, const QString& text) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly)) throw std::runtime_error("no file was made");
  file.write(text.toUtf8());
}

void openssl(const QStringList& arguments) {
  QProcess process;
  process.start("openssl", arguments);
  process.waitForFinished();
  if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
    throw std::runtime_error(process.readAllStandardError().toStdString());
}

} // namespace

TestCertificate makeCertificate(const std::string& hostName, Validity validity) {
  const QTemporaryDir folder;
  const QString host = QString::fromStdString(hostName);
  const QString config = folder.filePath("ca.conf");
  write(folder.filePath("index.txt"), "");
  write(config, "[ca]\ndefault_ca=d\n[d]\ndatabase=" + folder.filePath("index.txt") +
                    "\nnew_certs_dir=" + folder.path() +
                    "\nrand_serial=yes\ndefault_md=sha256\npolicy=p\nx509_extensions=e\n"
                    "[p]\ncommonName=supplied\n[e]\nsubjectAltName=DNS:" +
                    host + "\n");
  const QString key = folder.filePath("key.pem");
  const QString request = folder.filePath("request.pem");
  const QString certificate = folder.filePath("certificate.pem");
  openssl({"req", "-new", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-subj",
           "/CN=" + host, "-keyout", key, "-out", request});
  openssl({"ca", "-batch", "-notext", "-selfsign", "-config", config, "-keyfile", key, "-in", request, "-out",
           certificate, "-startdate", "20200101000000Z", "-enddate",
           validity == Validity::expired ? "20200102000000Z" : "20991231000000Z"});
  const QByteArray pem = contents(certificate);
  return {pem.toStdString(), QSslCertificate(pem), QSslKey(contents(key), QSsl::Ec)};
}

} // namespace vantle::testing_support
