// An engine that does no work: it answers the request with the arrays it was sent.
#include "engine/exchange.h"

int main() {
  auto request = quorvane::ReadExchangeFile(quorvane::kRequestFile, quorvane::ExchangeKind::Request);
  if (!request) return 4;
  return quorvane::WriteExchangeFile(quorvane::kResponseFile, quorvane::ExchangeKind::Response,
                                     *request)
             ? 0
             : 5;
}
