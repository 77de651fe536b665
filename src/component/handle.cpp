#include "component/handle.h"

#include "component/apartment.h"
#include "component/handle_pool.h"

namespace hy_wristlog::component {

std::uint32_t addReference(Shell& shell) noexcept {
  std::uint32_t references = shell.References.load();
  while (references != 0 && !shell.References.compare_exchange_weak(references, references + 1)) {
  }
  return references == 0 ? 0 : references + 1;
}

std::uint32_t release(Shell& shell) noexcept {
  std::uint32_t references = shell.References.load();
  if (references == 0) return 0;
  Apartment* here = Apartment::hereIfAny();
  if (shell.Home.get() != here) {
    const std::shared_ptr<Apartment> home = shell.Home;
    return home->releaseFromElsewhere(shell);
  }
  while (!shell.References.compare_exchange_weak(references, references - 1))
    if (references == 0) return 0;
  if (references == 1) here->end(shell);
  return references - 1;
}

Hold::Hold(Shell& shell) noexcept : shell_(shell), holds_(addReference(shell) != 0) {
  if (holds_) ++shell_.Running;
}

Hold::~Hold() {
  if (!holds_) return;
  if (--shell_.Running == 0 && shell_.EndWaits)
    shell_.Home->end(shell_);
  else
    release(shell_);
}

Shell& makeShell(std::unique_ptr<Body> body, std::initializer_list<const void*> vtables) {
  std::shared_ptr<Apartment> home = Apartment::shareHere();
  Shell& shell = takeShell();
  try {
    home->add(shell);
  } catch (...) {
    giveBackShell(shell);
    throw;
  }
  std::size_t facet = 0;
  for (const void* vtable : vtables) {
    shell.Facets[facet].lpVtbl = static_cast<const HyUnknownVtable*>(vtable);
    shell.Facets[facet++].Owner = &shell;
  }
  shell.Home = std::move(home);
  shell.Content = std::move(body);
  shell.References.store(1);
  return shell;
}

HyResult enter(const Shell& shell) {
  Apartment* here = Apartment::hereIfAny();
  if (here != nullptr) here->collect();
  if (shell.References.load() == 0) return HY_RPC_E_DISCONNECTED;
  if (shell.Home.get() != here) return HY_RPC_E_WRONG_THREAD;
  return shell.Content ? HY_S_OK : HY_RPC_E_DISCONNECTED;
}

}  // namespace hy_wristlog::component
