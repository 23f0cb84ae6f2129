#include "driver/state_store.h"

#include <fmt/format.h>

#include <map>

#include "driver/file_image.h"
#include "driver/folder.h"
#include "driver/memory_image.h"

namespace simulator {
namespace {

class MemoryStore final : public StateStore {
 public:
  std::optional<std::string> load(const std::string& name) override {
    const auto found = contents_.find(name);
    if (found == contents_.end()) return std::nullopt;
    return found->second;
  }
  void update(const std::string& name, const Change& change) override { contents_[name] = change(load(name)); }
  std::unique_ptr<DiskImage> disk(const std::string&, std::uint64_t) override { return std::make_unique<MemoryImage>(); }
  std::string describe(const std::string& name) const override { return name; }

 private:
  std::map<std::string, std::string> contents_;
};

class FolderStore final : public StateStore {
 public:
  explicit FolderStore(const std::string& path) : folder_(path) {}

  std::optional<std::string> load(const std::string& name) override {
    const Descriptor file = folder_.open_present(name, O_RDONLY);
    if (!file.is_open()) return std::nullopt;

    std::string content;
    char piece[4096];
    for (;;) {
      const ssize_t size = uninterrupted([&] { return read(file.get(), piece, sizeof(piece)); });
      if (size < 0) folder_.fail(name, "cannot be read");
      if (size == 0) return content;
      content.append(piece, static_cast<std::size_t>(size));
      if (content.size() > kMostBytes) {
        throw StateError::damaged(describe(name), "the whole file", fmt::format("at most {} bytes", kMostBytes));
      }
    }
  }

  void update(const std::string& name, const Change& change) override {
    const Folder::Lock held = folder_.lock();
    const std::optional<std::string> present = load(name);
    const std::string content = change(present);
    if (present != content) replace(name, content);
  }

  std::unique_ptr<DiskImage> disk(const std::string& name, std::uint64_t bytes) override {
    return std::make_unique<FileImage>(folder_, name, bytes);
  }

  std::string describe(const std::string& name) const override { return folder_.describe(name); }

 private:
  static constexpr std::size_t kMostBytes = 1 << 20;  // far more than anything that is kept has

  void replace(const std::string& name, const std::string& content) const {
    folder_.replace(name, [&](int file) {
      std::size_t done = 0;
      while (done < content.size()) {
        const ssize_t size = uninterrupted([&] { return write(file, content.data() + done, content.size() - done); });
        if (size < 0) return false;
        done += static_cast<std::size_t>(size);
      }
      return true;
    });
  }

  Folder folder_;
};

}  // namespace

StateError StateError::damaged(std::string_view file, std::string_view where, std::string_view wanted) {
  return StateError(fmt::format("{}: damaged: {}: expected {}; remove the file to start with fresh state", file, where, wanted));
}

std::unique_ptr<StateStore> memory_store() { return std::make_unique<MemoryStore>(); }

std::unique_ptr<StateStore> folder_store(const std::string& path) { return std::make_unique<FolderStore>(path); }

}  // namespace simulator
