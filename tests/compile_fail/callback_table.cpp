// Rows and tables of callbacks that cannot be right.
#include "transport/callback_table.h"

#ifdef TWO_ROWS_FOR_ONE_CALLBACK  // refused: two rows of Callbacks describe the same callback
// The library's own table, with its second row replaced by its first.
namespace vaskdfc {
template <typename First, typename Second, typename... Others>
struct TableWithItsFirstRowTwice : Table<First, First, Others...> {};
}  // namespace vaskdfc
#define Table TableWithItsFirstRowTwice
#endif
#include "transport/callbacks.h"

using namespace vaskdfc;

enum class Sample { kOne = 1 };

struct Request {
#ifdef PARAMETER_WITH_PADDING  // refused: a callback's parameter must be a plain record without padding
  std::uint8_t byte;
#else
  std::uint8_t bytes[4];
#endif
  std::uint32_t word;
};

using SampleRow = Row<Sample::kOne, "SAMPLE", In<Request>,
#ifdef FOUR_PARAMETERS_BESIDE_THE_HEADER  // refused: a callback takes the header and at most three more parameters
                      Out<Bytes<8>>,
#endif
                      Out<Bytes<4>>, InOut<Bytes<16>>>;
static_assert(SampleRow::kFacts.parameters == 4);
