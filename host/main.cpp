#include "host/cli/program.h"
#include "host/demo/bench_show.h"
#include "host/demo/demo_show.h"
#include "host/memory/allocation.h"
#include "host/session/closed_streams.h"
#include "host/session/failure.h"
#include "host/terminal/terminal_face.h"

int main(int argc, char** argv) {
  if (!orbel::host::FillClosedStreams()) return orbel::host::kFailed;
  orbel::host::RefuseWhereThereIsNoMemory();
  orbel::host::cli::Faces faces;
  faces.play = [](const orbel::host::PlayOptions& options, orbel::host::PlayReport* report) {
    const orbel::host::SmallPiecesFromReserve operable;
    return orbel::host::terminal::Play(options, report);
  };
  faces.writeDemo = [](const std::string& folder, const std::function<void(const std::string&)>& progress) {
    orbel::host::WriteDemoShow(folder, [&](const orbel::host::DemoProgress& state) { progress(state.file); });
  };
  faces.writeBenchShow = [](const std::string& folder) { orbel::host::WriteBenchShow(folder); };
  return orbel::host::cli::RunProgram(argc, argv, faces);
}
