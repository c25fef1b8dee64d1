#include "host/cli/program.h"
#include "host/demo/demo_show.h"
#include "host/terminal/terminal_face.h"

int main(int argc, char** argv) {
  host::cli::Faces faces;
  faces.play = host::terminal::Play;
  faces.writeDemo = [](const std::string& folder) { WriteDemoShow(folder); };
  return host::cli::RunProgram(argc, argv, faces);
}
