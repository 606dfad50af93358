// A set of open files and the requests on it. iocntc() uses the library's own session; tests
// and tools may have their own sessions.
#pragma once

#include "io/Src/Main/dataset_header.h"
#include "io/Src/Main/iocntc.h"
#include "io/Src/Main/open_file.h"
#include "io/Src/Main/plain_text.h"
#include "io/Src/Main/read_dataset.h"
#include "io/Src/Main/write_dataset.h"

#include <memory>
#include <optional>

struct dataset_name;
struct request_traits;

/// One primary, one secondary and one plain text file, and the state of unfinished requests.
class io_session
{
public:
    /// `env` outlives the session.
    explicit io_session(io_env &env);
    io_session(const io_session &) = delete;
    io_session &operator=(const io_session &) = delete;

    /// Closes the files that are still open.
    ~io_session();

    /// See iocntc().
    [[nodiscard]] int request(io_request request, io_error_routine routine, IO_header *header,
                              IO_data *data);

    /// The open primary file, for tools that go beyond the requests; null if
    /// there is none.
    open_file *primary() { return primary_.mode == open_mode::none ? nullptr : &primary_; }

private:
    /// A dataset begun by IO_WRITE_HEADER.
    struct begun_dataset
    {
        pending_dataset pending;
        data_shape shape;
        std::int64_t next = 0; ///< where the stream continues
        bool has_data = false;
    };

    /// A header read by IO_READ_HEADER, with its data still to come.
    struct begun_reading
    {
        located_start start;
    };

    /// The data of the dataset that IO_READ_BLOCK reads block by block.
    struct block_source
    {
        located_start start;
        data_shape shape;
        element_storage storage;
    };

    [[nodiscard]] int check_arguments(const request_traits &needs, const IO_header *header,
                                      const IO_data *data) const;
    [[nodiscard]] int dispatch(io_request request, IO_header &header, IO_data &data);

    [[nodiscard]] int open(open_file &file, const IO_data &data, const char *access,
                           const char *failure);
    [[nodiscard]] int close(open_file &file, const char *failure);
    [[nodiscard]] int check_open(const open_file &file, const char *which) const;
    [[nodiscard]] int make_busy(open_file &file, const char *which, io_request request,
                                bool may_create = true);
    void drop_begun();
    [[nodiscard]] int add_line(int code, const char *line) const;

    [[nodiscard]] int locate(open_file &file, const char *which, const IO_header &header,
                             IO_data &data);
    [[nodiscard]] int read_dataset(IO_header &header, IO_data &data);
    [[nodiscard]] int read_dataset_header(IO_header &header, const IO_data &data);
    [[nodiscard]] int read_data_here(IO_data &data);
    [[nodiscard]] int read_block(IO_header &header, IO_data &data);
    [[nodiscard]] int load_blocks(std::int64_t position);
    [[nodiscard]] int read_compressed_data(IO_header &header, IO_data &data);

    [[nodiscard]] int write_whole(open_file &file, const char *which, io_request request,
                                  const IO_header &header, const IO_data &data);
    [[nodiscard]] int write_dataset_header(const IO_header &header, IO_data &data);
    [[nodiscard]] int write_data_here(const IO_data &data);
    [[nodiscard]] int end_begun_dataset();
    [[nodiscard]] int write_compressed_data(const IO_header &header, IO_data &data);
    [[nodiscard]] int delete_datasets(const IO_header &header);
    [[nodiscard]] int copy(const IO_header &header, const IO_data &data);
    [[nodiscard]] int copy_matches(const dataset_name &name);
    template <typename Copy>
    [[nodiscard]] int copy_many(io_request request, Copy copy);

    [[nodiscard]] int open_text(const IO_data &data);
    [[nodiscard]] int close_text();
    template <typename Work>
    [[nodiscard]] int with_text(const char *failure, Work work);

    io_env &env_;
    io_reporter report_;
    open_file primary_;
    open_file secondary_;
    plain_text text_;
    located_datasets scratch_;
    std::optional<begun_dataset> begun_;
    std::optional<begun_reading> reading_;
    std::unique_ptr<block_source> blocks_; ///< owned
};
