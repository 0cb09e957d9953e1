#include "Benchmarks/Measure.h"
#include "Tests/Support/TemporaryDirectory.h"

int main() {
  const Fixture::TemporaryDirectory folder;
  // Memory that this process freed would be used again unseen, so what is measured for it comes first.
  measureExport(folder.path());
  measureMessages(folder.path());
  measureCopying(folder.path());
  measureDecryption(folder.path());
}
