// Functions whose subject isn't built yet. Their names are kept for them, and using one is an error
// that names it.
#include "functions/subjects.h"

namespace zeb {
namespace {

// clang-format off
constexpr expression_function rows[] = {
    {"cutswap", "[T N1 N2]", "cutoff of swapping", nullptr},
    {"dcomp", "[type]", "last result of dcomp", nullptr},
    {"discoeff", "[T1 T2]", "distortion coefficient of the trees", nullptr, function_list::general, "deslist"},
    {"fixlik", "[T]", "likelihood of tree T with fixed branch lengths", nullptr},
    {"implik", "[T]", "implied likelihood of tree T", nullptr},
    {"lik", "[T]", "likelihood of tree T", nullptr},
    {"lmdims", "[C]", "dimensions of landmark character C", nullptr},
    {"lmfactor", "[C]", "factor of landmark character C", nullptr},
    {"lmmaxdist", "[C L]", "largest distance for landmark L of character C", nullptr},
    {"lmnpoints", "[C]", "landmarks of character C", nullptr},
    {"lmscore", "[T C]", "score of landmark character C on tree T", nullptr},
    {"lmwt", "[C L]", "weight of landmark L of character C", nullptr},
    {"lmxcell", "[C L N T]", "grid cell of a landmark", nullptr},
    {"lmxcoord", "[C L N T]", "coordinate of a landmark", nullptr},
    {"matchtax", "[T1 T2]", "list of matching taxa", nullptr},
    {"mklik", "[T C]", "likelihood of a character", nullptr},
    {"mplik", "[T C]", "likelihood of the most parsimonious states", nullptr},
    {"numcategs", "", "number of categories", nullptr, function_list::general, "numclads"},
    {"simplik", "[T]", "simple likelihood of tree T", nullptr},
    {"slerrmarg", "", "error margin of the approximate search", nullptr},
    {"smplik", "[T]", "sampled likelihood of tree T", nullptr},
    {"sprdiff", "[T1 T2]", "number of SPR moves between the trees", nullptr},
    {"sprsim", "[T1 T2]", "similarity by SPR moves", nullptr},
    {"attag", "[G J K]", "1 if the tag of task K of job J is at least G; without K (optional), how many tasks", nullptr, function_list::parallel},
    {"bestscore", "[J K]", "best score of task K of job J", nullptr, function_list::parallel},
    {"deltascore", "[J]", "improvement of score in job J", nullptr, function_list::parallel},
    {"hostload", "[H]", "load of host H", nullptr, function_list::parallel},
    {"isinhgroup", "[G H]", "1 if host H is in host group G", nullptr, function_list::parallel},
    {"ntasksbelow", "[J S]", "tasks of job J with best score at or below S", nullptr, function_list::parallel},
    {"numerrors", "[J]", "errors in job J", nullptr, function_list::parallel},
    {"numrearrangs", "[J K]", "rearrangements done by task K of job J", nullptr, function_list::parallel},
    {"numreps", "[J K]", "replications done by task K of job J", nullptr, function_list::parallel},
    {"numtasks", "[J]", "tasks of job J", nullptr, function_list::parallel},
    {"numtrees", "[J K]", "trees found by task K of job J", nullptr, function_list::parallel},
    {"percdone", "[J K]", "percentage done by task K of job J", nullptr, function_list::parallel},
    {"pexstatus", "[J K]", "exit status of task K of job J", nullptr, function_list::parallel},
    {"runtime", "[J K]", "seconds that task K of job J has run", nullptr, function_list::parallel},
    {"schalg", "[J K]", "algorithm that task K of job J is in", nullptr, function_list::parallel},
    {"speed", "[...]", "list of speeds of the hosts", nullptr, function_list::parallel},
    {"tagsum", "[J]", "sum of the tags of job J", nullptr, function_list::parallel},
    {"tasksatsch", "[J alg]", "tasks of job J in algorithm alg", nullptr, function_list::parallel},
    {"tasksin", "[H]", "tasks in host H", nullptr, function_list::parallel},
    {"tasksleft", "[J]", "tasks of job J still running", nullptr, function_list::parallel},
    {"tasksrecvd", "[J]", "tasks of job J received", nullptr, function_list::parallel},
    {"tasktoh", "[J K]", "host of task K of job J", nullptr, function_list::parallel},
    {"treeparts", "[J]", "parts of trees received from job J", nullptr, function_list::parallel},
    {"waitsuccess", "", "0 when the last wait ended on its time-out", nullptr, function_list::parallel},
    {"acttasks", "", "tasks that are running", nullptr, function_list::unlisted},
    {"lmycell", "[C L N T]", "grid cell of a landmark", nullptr, function_list::unlisted},
    {"lmycoord", "[C L N T]", "coordinate of a landmark", nullptr, function_list::unlisted},
    {"lmzcell", "[C L N T]", "grid cell of a landmark", nullptr, function_list::unlisted},
    {"lmzcoord", "[C L N T]", "coordinate of a landmark", nullptr, function_list::unlisted},
    {"rfdistp", "[T1 T2]", "Robinson-Foulds distance of the trees", nullptr, function_list::unlisted},
};
// clang-format on

}  // namespace

const std::span<const expression_function> reserved_functions = rows;

}  // namespace zeb
