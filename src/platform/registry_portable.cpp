// In-memory registry: two root trees, handles that name a key by its path.
#include <map>
#include <memory>
#include <mutex>
#include <variant>

#include "platform/guid.h"
#include "platform/registry.h"

namespace vantaro {

namespace {

using Value = std::variant<uint32_t, std::u16string>;

struct Node {
  std::u16string name;
  std::map<std::u16string, std::pair<std::u16string, Value>> values;  // folded -> (name, data)
  std::map<std::u16string, std::unique_ptr<Node>> children;           // folded -> node
};

std::u16string Fold(const std::u16string& text) {
  std::u16string folded = text;
  for (char16_t& c : folded) {
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c - u'A' + u'a');
  }
  return folded;
}

std::vector<std::u16string> SplitPath(const std::u16string& path) {
  std::vector<std::u16string> parts;
  std::u16string part;
  for (char16_t c : path) {
    if (c == u'\\') {
      if (!part.empty()) parts.push_back(part);
      part.clear();
    } else {
      part.push_back(c);
    }
  }
  if (!part.empty()) parts.push_back(part);
  return parts;
}

struct Store {
  std::mutex lock;
  Node classesRoot;
  Node currentUser;
  bool deniedClasses = false;
  bool deniedUser = false;
  // An open handle remembers its root and the path below it.
  std::map<RegistryKey, std::pair<RegistryKey, std::vector<std::u16string>>> handles;
  RegistryKey nextHandle = 0x1000;
};

Store& TheStore() {
  static Store store;
  return store;
}

bool IsRoot(RegistryKey key) {
  return key == kRegistryClassesRoot || key == kRegistryCurrentUser;
}

// The root and path that `key` stands for, or false for an unknown handle.
bool Resolve(Store& s, RegistryKey key, RegistryKey* root, std::vector<std::u16string>* path) {
  if (IsRoot(key)) {
    *root = key;
    path->clear();
    return true;
  }
  const auto it = s.handles.find(key);
  if (it == s.handles.end()) return false;
  *root = it->second.first;
  *path = it->second.second;
  return true;
}

bool Denied(const Store& s, RegistryKey root) {
  return root == kRegistryClassesRoot ? s.deniedClasses : s.deniedUser;
}

Node* Walk(Store& s, RegistryKey root, const std::vector<std::u16string>& path, bool create) {
  Node* node = root == kRegistryClassesRoot ? &s.classesRoot : &s.currentUser;
  for (const std::u16string& part : path) {
    auto& slot = node->children[Fold(part)];
    if (!slot) {
      if (!create) {
        node->children.erase(Fold(part));
        return nullptr;
      }
      slot = std::make_unique<Node>();
      slot->name = part;
    }
    node = slot.get();
  }
  return node;
}

// Finds the node of an open key; sets `error` when there is none.
Node* NodeOf(Store& s, RegistryKey key, int32_t* error) {
  RegistryKey root = 0;
  std::vector<std::u16string> path;
  if (!Resolve(s, key, &root, &path)) {
    *error = kErrorInvalidParameter;
    return nullptr;
  }
  if (Denied(s, root)) {
    *error = kErrorAccessDenied;
    return nullptr;
  }
  Node* node = Walk(s, root, path, false);
  *error = node == nullptr ? kErrorFileNotFound : kErrorSuccess;
  return node;
}

int32_t OpenOrCreate(RegistryKey parent, const std::u16string& subPath, RegistryKey* key,
                     bool create) {
  Store& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  RegistryKey root = 0;
  std::vector<std::u16string> path;
  if (!Resolve(s, parent, &root, &path)) return kErrorInvalidParameter;
  if (Denied(s, root)) return kErrorAccessDenied;
  for (const std::u16string& part : SplitPath(subPath)) path.push_back(part);
  if (Walk(s, root, path, create) == nullptr) return kErrorFileNotFound;
  *key = s.nextHandle++;
  s.handles[*key] = {root, path};
  return kErrorSuccess;
}

void Dump(const Node& node, const std::u16string& prefix, std::vector<std::string>* lines) {
  auto narrow = [](const std::u16string& text) { return std::string(text.begin(), text.end()); };
  for (const auto& [folded, entry] : node.values) {
    std::string data;
    if (const auto* dword = std::get_if<uint32_t>(&entry.second)) {
      data = std::to_string(*dword);
    } else {
      data = narrow(std::get<std::u16string>(entry.second));
    }
    lines->push_back("value " + narrow(prefix) + "|" + narrow(entry.first) + "=" + data);
  }
  for (const auto& [folded, child] : node.children) {
    const std::u16string path = prefix.empty() ? child->name : prefix + u"\\" + child->name;
    lines->push_back("key " + narrow(path));
    Dump(*child, path, lines);
  }
}

}  // namespace

int32_t RegistryCreateKey(RegistryKey parent, const std::u16string& path, RegistryKey* key) {
  return OpenOrCreate(parent, path, key, true);
}

int32_t RegistryOpenKey(RegistryKey parent, const std::u16string& path, RegistryKey* key) {
  return OpenOrCreate(parent, path, key, false);
}

int32_t RegistryCloseKey(RegistryKey key) {
  Store& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  if (IsRoot(key)) return kErrorSuccess;
  return s.handles.erase(key) == 1 ? kErrorSuccess : kErrorInvalidParameter;
}

namespace {
template <class Value>
int32_t SetValue(RegistryKey key, const std::u16string& name, const Value& value) {
  Store& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  int32_t error = 0;
  Node* node = NodeOf(s, key, &error);
  if (node == nullptr) return error;
  node->values[Fold(name)] = {name, value};
  return kErrorSuccess;
}
}  // namespace

int32_t RegistrySetString(RegistryKey key, const std::u16string& name,
                          const std::u16string& value) {
  return SetValue(key, name, value);
}

int32_t RegistryQueryDword(RegistryKey key, const std::u16string& name, uint32_t* value) {
  Store& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  int32_t error = 0;
  Node* node = NodeOf(s, key, &error);
  if (node == nullptr) return error;
  const auto it = node->values.find(Fold(name));
  if (it == node->values.end()) return kErrorFileNotFound;
  // Four bytes are read whatever the type; a string of another size does not fit.
  if (const auto* dword = std::get_if<uint32_t>(&it->second.second)) {
    *value = *dword;
    return kErrorSuccess;
  }
  const std::u16string& text = std::get<std::u16string>(it->second.second);
  if ((text.size() + 1) * 2 != 4) return 234;  // more data than the buffer holds
  *value = static_cast<uint32_t>(text[0]);
  return kErrorSuccess;
}

int32_t RegistrySetDword(RegistryKey key, const std::u16string& name, uint32_t value) {
  return SetValue(key, name, value);
}

int32_t RegistryEnumSubKey(RegistryKey key, uint32_t index, std::u16string* name) {
  Store& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  int32_t error = 0;
  Node* node = NodeOf(s, key, &error);
  if (node == nullptr) return error;
  if (index >= node->children.size()) return kErrorNoMoreItems;
  auto it = node->children.begin();
  std::advance(it, index);
  *name = it->second->name;
  return kErrorSuccess;
}

int32_t RegistryDeleteKey(RegistryKey key, const std::u16string& subKey) {
  Store& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  int32_t error = 0;
  Node* node = NodeOf(s, key, &error);
  if (node == nullptr) return error;
  const auto it = node->children.find(Fold(subKey));
  if (it == node->children.end()) return kErrorFileNotFound;
  if (!it->second->children.empty()) return kErrorAccessDenied;
  node->children.erase(it);
  return kErrorSuccess;
}

void RegistryResetForTests() {
  Store& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  s.classesRoot = Node{};
  s.currentUser = Node{};
  s.deniedClasses = false;
  s.deniedUser = false;
  s.handles.clear();
}

void RegistrySetDeniedForTests(RegistryKey root, bool denied) {
  Store& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  (root == kRegistryClassesRoot ? s.deniedClasses : s.deniedUser) = denied;
}

std::vector<std::string> RegistryDumpForTests(RegistryKey root, const std::u16string& path) {
  Store& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  std::vector<std::string> lines;
  const Node* node = Walk(s, root, SplitPath(path), false);
  if (node != nullptr) Dump(*node, u"", &lines);
  return lines;
}

size_t RegistryOpenHandlesForTests() {
  Store& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  return s.handles.size();
}

}  // namespace vantaro
