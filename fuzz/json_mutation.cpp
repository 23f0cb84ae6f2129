// Changes to JSON documents that leave them JSON: whoever only swaps bytes rarely gets past the parser.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

using nlohmann::json;

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t room);

namespace {

using Random = std::minstd_rand;

// A value with the object or array that holds it; null for the document itself.
struct Place {
  json* holder;
  json* value;
};

void collect(json& value, json* holder, std::vector<Place>& places) {
  places.push_back({holder, &value});
  if (!value.is_structured()) return;
  for (json& inner : value) collect(inner, &value, places);
}

std::size_t below(Random& random, std::size_t end) { return random() % end; }

Place& any(std::vector<Place>& places, Random& random) { return places[below(random, places.size())]; }

json number(const json& old, Random& random) {
  constexpr std::int64_t kNumbers[] = {-1, 0, 1, 3, 4, 31, 32, 255, 256, 4095, 16383, 65535, INT32_MAX, UINT32_MAX, INT64_MAX};
  const std::size_t choice = below(random, std::size(kNumbers) + 2);
  if (choice >= std::size(kNumbers) && old.is_number_integer()) {
    return static_cast<std::int64_t>(old.get<std::uint64_t>() + (choice == std::size(kNumbers) ? 1 : UINT64_MAX));
  }
  return kNumbers[choice % std::size(kNumbers)];
}

json text(std::string old) {
  constexpr std::size_t kGrowth = 16;
  const std::size_t size = old.size();
  old.resize(size + kGrowth);
  old.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(old.data()), size, old.size()));
  return old;
}

void remove(const Place& place) {
  if (place.holder == nullptr) return;
  for (auto item = place.holder->begin(); item != place.holder->end(); ++item) {
    if (&*item != place.value) continue;
    place.holder->erase(item);
    return;
  }
}

void mutate(json& document, Random& random) {
  std::vector<Place> places;
  collect(document, nullptr, places);
  const Place place = any(places, random);
  const json other = *any(places, random).value;
  switch (below(random, 6)) {
    case 0: return remove(place);
    case 1: *place.value = other; return;
    case 2:
      if (place.value->is_array()) place.value->push_back(place.value->empty() ? other : place.value->back());
      return;
    case 3:
      if (place.value->is_object() && other.is_object()) place.value->update(other);
      return;
    case 4: *place.value = number(*place.value, random); return;
    default:
      if (place.value->is_string()) *place.value = text(place.value->get<std::string>());
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed) {
  Random random(seed);
  json document = json::parse(data, data + size, nullptr, /*allow_exceptions=*/false);
  constexpr std::size_t kTextShare = 8;  // of which one mutation is of the text, whatever it is
  if (document.is_discarded() || below(random, kTextShare) == 0) return LLVMFuzzerMutate(data, size, room);

  for (std::size_t changes = 1 + below(random, 3); changes > 0; --changes) mutate(document, random);
  const std::string text = document.dump(-1, ' ', true, json::error_handler_t::replace);
  if (text.size() > room) return LLVMFuzzerMutate(data, size, room);
  std::ranges::copy(text, data);
  return text.size();
}
