// SPDX-License-Identifier: MIT

#include "simulator/pty_server.h"

namespace vt63x {

PtyServer::PtyServer(const Options& options)
    : port_(chip_, options.faults), line_(device_, port_, {options.pace}) {
  for (const auto& [address, value] : options.registers) chip_.Preset(address, value);
  for (const AirFault& fault : options.air_faults) chip_.field().faults().Set(fault);
  if (!FillField(chip_.field(), options.cards, error_)) return;
  if (device_.Open(error_) && line_.Open(error_))
    thread_ = std::thread([this] { end_ = line_.Serve(); });
}

PtyServer::~PtyServer() { Stop(); }

void PtyServer::Stop() {
  if (!thread_.joinable()) return;
  line_.Stop();
  thread_.join();
}

}  // namespace vt63x
