package API;

use strict;
use warnings;
use feature 'signatures';

use VEL::Model;
use VEL::Parser::Lite;
use VEL::Record qw(change_line change_text field_line finding_lines);
use VEL::Upgrade;
use VEL::Validate;

=head1 NAME

API - the methods of the Perl side that the program calls

=head1 SYNOPSIS

    my $api = API->new;
    my @lines;
    my $error = $api->readTextFile('duct.vel', \@lines) || $api->parseVELData(\@lines, 0);

=head1 DESCRIPTION

An object of this class has one set of command data. It contains no rules itself: the rules
are in L<VEL::Model> and L<VEL::Rules>.

Methods that return a message return nothing, or an empty text, on success.
Methods that return an integer return 1 or 0. Every other failure is an exception,
which the program turns into a message or -1.

Some methods give texts that are made from records. For each of them a second method,
whose name ends in C<Records>, fills an array with the records (see L<VEL::Record>).

=head1 METHODS

=over

=item C<< API->new >>, C<< API->new($database) >>

A new object with an empty database, or with the given L<VEL::Parser::Lite>.
C<< $api->{database} >> is that database; it never changes.

=cut

sub new ($class, $database = VEL::Parser::Lite::NEW()) {
    return bless {
        database => $database,
        model    => VEL::Model->of($database),
        reported => '',
    }, $class;
}

=item C<readTextFile($file, $lines)>

Fills the array with the lines of a text file, without line ends and without a
byte order mark before them.

=cut

sub readTextFile ($self, $file, $lines) {
    return "readTextFile: $file: open failed: it is a directory" if -d $file;
    open my $handle, '<:raw', $file or return "readTextFile: $file: open failed: $!";
    my $text = do { local $/ = undef; readline $handle };
    return "readTextFile: $file: read failed: $!" if !defined $text || !close $handle;
    $text =~ s/\A\xEF\xBB\xBF//;
    @$lines = split /\n/, $text, -1;
    pop @$lines if @$lines && $lines->[-1] eq '';
    return '';
}

=item C<parseVELData($lines, $library)>

Parses lines into the database, as library data if the second argument is true.

=cut

sub parseVELData ($self, $lines, $library) {
    return $library ? $self->{database}->loadLibraryData($lines) : $self->{database}->loadVELData($lines);
}

=item C<useLibraries($names, $folder)>

Makes C<readLibraries> read the libraries with these names, separated by C<;>, in this
folder, instead of those that the environment names.

=cut

sub useLibraries ($self, $names, $folder) {
    $self->{libraries} = [ $names, $folder ];
    return '';
}

=item C<readLibraries>

Reads the rule libraries that C<useLibraries> names, otherwise those that the environment
names. Also returns the faults of the rules, each once. All other rules work.

=item C<readLibrariesRecords($faults)>

The same, but fills the array with the faults of the rules, as findings. The message is
only about libraries that could not be read.

=cut

sub readLibraries ($self) {
    my $error = $self->readLibrariesRecords(\my @faults);
    return join "\n", grep { defined && length } $error, finding_lines(@faults);
}

sub readLibrariesRecords ($self, $faults) {
    my $database = $self->{database};
    my $named    = $self->{libraries};
    my $error    = $named ? $database->readNamedLibraries(@$named) : $database->readLibraries;
    $self->{model}->forget;
    @$faults = $self->{model}->rules->fault_records;
    my $found = finding_lines(@$faults);
    @$faults = () if $self->{reported} eq $found;
    $self->{reported} = $found;
    return $error;
}

=item C<updateSolverVEL>

Upgrades the data to the language version of the libraries. Returns the list of changes,
one line for each; empty if there are none.

=item C<updateSolverVELRecords($changes)>

The same, but fills the array with the changes, each with its C<text>.

=cut

sub updateSolverVEL ($self) {
    my $upgrade = VEL::Upgrade->new($self->{model});
    my @changes;
    my $error = eval { $upgrade->run(\@changes); 1 } ? undef : $@;
    my @lines = map { change_line($_) } @changes;
    return join "\n", @lines if !defined $error;
    # The changes that were made before the failure stay, so they are reported too.
    die $upgrade->failed ? join("\n", @lines, $error) : $error;
}

sub updateSolverVELRecords ($self, $changes) {
    VEL::Upgrade->new($self->{model})->run($changes);
    $_->{text} = change_text($_) for @$changes;
    return '';
}

=item C<getAllowedParamStrings($path, $values)>

Fills the array with the values that a parameter may have: the values that its rule lists,
C<Yes> and C<No> for a logical, or the names of the objects that it may refer to. The
array is empty if any value is allowed.

=cut

sub getAllowedParamStrings ($self, $path, $values) {
    @$values = $self->{model}->allowed_values($path);
    return '';
}

=item C<getAllowedParams($path, $names, $flag)>

Fills the array with the names of the parameters that an object may have: with
flag 0 all of them, in rule order; with flag 1 those that it does not have yet,
first the required ones, then the others, each in rule order. The single entry
C<-1> means any name. With flag 2 only the required ones that it does not have yet,
even if any name is allowed.

=cut

sub getAllowedParams ($self, $path, $names, $flag) {
    return 'getAllowedParams: no path' if !defined $path;
    return "getAllowedParams: there is no object at $path"
        if $path ne '/' && !$self->{database}->isObject($path);
    my $model = $self->{model};
    @$names = $flag == 2 ? $model->missing_parameters($path) : $model->allowed_parameters($path, $flag);
    return '';
}

=item C<explainItem($path, $lines)>

Fills the array with what the rules say about an object or parameter, whether it exists or
not: lines of the form C<Field = text>, as in a rule. If there is no rule, the array is empty.

=item C<explainItemRecords($path, $fields)>

The same, but fills the array with the fields.

=cut

sub explainItem ($self, $path, $lines) {
    my $error = $self->explainItemRecords($path, \my @fields);
    @$lines = map { field_line($_) } @fields;
    return $error;
}

sub explainItemRecords ($self, $path, $fields) {
    @$fields = map {
        my ($name, $text, $tip) = @$_;
        +{ name => $name, text => $text, $tip ? (tip => 1) : () }
    } $self->{model}->explanation($path);
    return '';
}

=item C<isParamEditable($path)>

1 if the parameter may be changed, otherwise 0. In safe mode (validation level 2) only
parameters that a running solver reads again may be changed.

=cut

sub isParamEditable ($self, $path) { return $self->{model}->is_editable($path) }

=item C<isItemExpert($path)>

1 if the object or parameter is only for experts, otherwise 0.

=cut

sub isItemExpert ($self, $path) { return $self->{model}->is_expert($path) }

=back

=cut

1;
