#include "parallel/tasks/disk_data.h"

#include <unistd.h>

#include <cstdio>

#include "base/input_file.h"
#include "base/message_text.h"
#include "base/output_file.h"
#include "parallel/messages/tags.h"
#include "parallel/tasks/task_state.h"

namespace zeb {
namespace {

/// What is wrong; empty: nothing.
std::string problem_of(input_file& file, const task_orders& orders) {
  int characters = 0;
  int taxa = 0;
  int cell_bytes = 0;
  std::string head;
  for (int c = file.get(); c >= 0 && c != '\n'; c = file.get()) head += static_cast<char>(c);
  if (std::sscanf(head.c_str(), "%d %d %d", &characters, &taxa, &cell_bytes) != 3)
    return "wrong file";
  if (characters != orders.characters) return "char. number";
  if (taxa != orders.taxa) return "tax. number";
  return cell_bytes == orders.cell_bytes ? "" : "cell size";
}

}  // namespace

std::string data_of_disk(const task_orders& orders) {
  const std::string folder = orders.directory.empty() ? "" : orders.directory + "/";
  input_file file;
  std::string problem;
  std::string data;
  if (!orders.directory.empty() && access(orders.directory.c_str(), X_OK) != 0) {
    problem = "changing dir";
  } else if (!file.open_own(folder + disk_data_file)) {
    problem = "opening file";
  } else {
    problem = problem_of(file, orders);
    data = file.rest();
  }
  packet_writer reply;
  reply.put(problem.empty());
  reply.put_text(problem);
  task.link->send(parent_task, tag_disk_reply, reply.bytes());
  if (!problem.empty()) note_failed_task("Problem with the data on disk: " + problem);
  return problem.empty() ? data : std::string();
}

std::string disk_data_text(int characters, int taxa, int cell_bytes, const std::string& data) {
  return text_of("%i %i %i\n", characters, taxa, cell_bytes) + data;
}

std::string write_disk_file(const std::string& directory, const std::string& text) {
  if (!directory.empty() && access(directory.c_str(), X_OK) != 0) return "changing dir";
  const std::string name = (directory.empty() ? "" : directory + "/") + disk_data_file;
  output_file file;
  if (!file.create(name)) return "opening file";
  file.put(text);
  return file.close() ? "" : "writing file";
}

}  // namespace zeb
