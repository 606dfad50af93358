package VEL::Model;

use strict;
use warnings;
use feature 'signatures';

use Scalar::Util qw(weaken);

use VEL::Explanation;
use VEL::Parser::Lite;
use VEL::Rules;
use VEL::Rules::Library;
use VEL::Rules::Source;
use VEL::Suggest;

=head1 NAME

VEL::Model - the data of one command database seen through its rules

=head1 SYNOPSIS

    my $model = VEL::Model->of($database);
    print "read-only\n" if !$model->is_editable('/FLOW/DOMAIN:Duct/Kind');

=head1 DESCRIPTION

There is one model for each database, shared by all that ask for it. It listens
to the changes of the database, and so compiles the rules again only when a
library has changed something below F</RULES>, and lists the objects of a type
again only when objects have come or gone. It goes on listening after
C<clearChangeHandlers>. A database that belongs to the program alone cannot be
listened to; there the rules are read again at every C<refresh>.

Rules count only as library data (see L<VEL::Rules::Library>): what command data
states below F</RULES> changes none.

All paths may be relative to the current path.

=cut

# Every model there is, not owned.
my @models;

# A new thread begins without: databases stay in the thread that made them.
sub CLONE { @models = (); return }

=head1 METHODS

=over

=item C<< VEL::Model->of($database) >>

The model of a database, also when it is reached through another
C<VEL::Parser::Lite> object.

=cut

sub of ($class, $database) {
    @models = grep { defined } @models;
    weaken($_) for @models;
    for my $model (@models) {
        return $model if $database->isSameDatabase($model->{database});
    }
    my $self = bless {
        database  => $database,
        library   => undef,    # the rules apart from the data; undef while data states none
        rules     => undef,
        compiled  => 0,
        names     => {},
        first     => {},
        expressions => undef,
        text      => '',
        listeners => [],
    }, $class;
    $self->{library} = VEL::Rules::Library->from_tree($database) if $self->_is_mixed;
    $self->_listen;
    push @models, $self;
    weaken($models[-1]);
    return $self;
}

# The handler is called for every parameter of a file that is loaded, so the
# common case leaves at once. It goes when the handlers of the database are
# cleared, and what it holds then listens again.
sub _listen ($self) {
    my $model = $self;
    weaken($model);
    my $again = bless { code => sub { $model->_listen if $model } }, 'VEL::Model::Again';
    my $database = $self->{database};
    weaken($database);
    my $handler = sub {
        return if !$_[1] && defined $_[2] && $_[0] !~ m{^/(?:RULES|LIBRARY/EXPRESSIONS)/};
        # A library that is read while the rules are not known.
        return if $again && $model && !$model->{rules} && !$model->{library} && $_[1] != 2
            && defined($_[1] ? 1 : $_[2]) && index($_[0], '/RULES/') == 0 && $database->isLibrary($_[0]) == 1;
        $model->_changed(@_) if $model;
        return;
    };
    local $@;
    $self->{listens} = eval { $self->{database}->addChangeHandler($handler); 1 };
    delete $again->{code} if !$self->{listens};
    return;
}

sub _changed ($self, $path, $code, $new, $old) {
    if ($path =~ m{^/RULES(?:/|\z)}) {
        return if !$self->_is_data_change($path, $code, $new, $old);
    }
    @$self{qw(names first)} = ({}, {}) if $code;
    $self->{expressions} = undef if $path =~ m{^/LIBRARY/EXPRESSIONS/};
    return if !$code && defined $new && $path !~ m{^/RULES/};
    $_->($path, $code, $new, $old) for grep { defined } @{ $self->{listeners} };
    return;
}

# Whether a change below /RULES is the data's. Before the first such change the tree
# holds what the libraries state; from then on it is kept apart.
sub _is_data_change ($self, $path, $code, $new, $old) {
    my $is_gone = $code == 2 || ($code == 0 && !defined $new);
    if ($is_gone ? !$self->_is_inside_library($path) : $self->{database}->isLibrary($path) != 1) {
        $self->{library} //= VEL::Rules::Library->before_change($self->{database}, $path, $code, $old);
        return 1;
    }
    my $library = $self->{library};
    my $is_new  = !$library   ? 1
        : $is_gone            ? $library->remove($path)
        : $code               ? $library->add_block($path)
        :                       $library->set_field($path, $new);
    $self->_drop_rules if $is_new;
    return 0;
}

# Whether data has stated rules, or part of them.
sub _is_mixed ($self) {
    my $database = $self->{database};
    my @open = $database->havePath('/RULES') ? '/RULES' : ();
    while (defined(my $path = shift @open)) {
        return 1 if $database->isLibrary($path) != 1;
        $database->getChildObjectList($path, \my @blocks);
        push @open, map { "$path/$_" } @blocks;
    }
    return 0;
}

# Whether libraries alone have stated what is around a node that is gone. That of
# /RULES itself says nothing: what was in it has gone before.
sub _is_inside_library ($self, $path) {
    return 0 if $path eq '/RULES';
    for (my ($at) = split_path($path); $at ne '/'; ($at) = split_path($at)) {
        return 0 if $self->{database}->isLibrary($at) != 1;
    }
    return 1;
}

# Marks rest on the rules under which they were set.
sub _drop_rules ($self) {
    return if !$self->{rules};
    $self->{rules} = undef;
    $self->clear_marks;
    return;
}

=item C<clear_marks>

Takes the mark off every object.

=cut

# Without recursion: blocks may be nested thousands deep.
sub clear_marks ($self) {
    my $database = $self->{database};
    my @open = ('');
    while (defined(my $path = pop @open)) {
        $database->setValidEx($path || '/', 0, 1);
        my @objects;
        $database->getChildObjectList($path || '/', \@objects);
        push @open, map { "$path/$_" } grep { "$path/$_" ne '/RULES' } @objects;
    }
    return;
}

=item C<has_rules_in_data>

Whether command data states F</RULES>.

=cut

sub has_rules_in_data ($self) { return $self->{database}->isLibrary('/RULES') == 0 }

=item C<on_change($listener)>

Calls C<$listener> with path, code, new and old value for every object that
comes or goes, every parameter that goes (code 0, no new value), and every change
that is the data's below F</RULES>. The caller keeps the listener: the model does
not own it.

=cut

sub on_change ($self, $listener) {
    push @{ $self->{listeners} }, $listener;
    weaken($self->{listeners}[-1]);
    return;
}

=item C<refresh>

To be called before a round of questions: makes up for what could not be heard.

=item C<forget>

To be called after the libraries have been read: drops everything known of the
database, and takes all marks away.

=cut

sub refresh ($self) {
    return if $self->{listens};
    @$self{qw(names first expressions)} = ({}, {}, undef);
    my $text = $self->_text;
    return if $text eq $self->{text};
    $self->{text}    = $text;
    $self->{library} = $self->_is_mixed ? VEL::Rules::Library->from_tree($self->{database}) : undef;
    $self->_drop_rules;
    return;
}

sub forget ($self) {
    @$self{qw(rules names expressions)} = (undef, {}, undef);
    $self->refresh;
    $self->clear_marks;
    return;
}

=item C<database>, C<rules>, C<compiled>

The database; the rules as they are now; how often they have been compiled.

=cut

sub database ($self) { return $self->{database} }

sub rules ($self) { return $self->{rules} // $self->_compile }

sub compiled ($self) { $self->rules; return $self->{compiled} }

sub _compile ($self) {
    $self->{text} = $self->_text if !$self->{listens};
    $self->{compiled}++;
    $self->{first} = {};
    return $self->{rules} = $self->{library} ? VEL::Rules->new($self->{library}->top) : $self->_shared_rules;
}

# Databases whose libraries state the same share the rules: { stated, rules }, not owned.
my @shared;

sub _shared_rules ($self) {
    my $database = $self->{database};
    my $stated   = $database->getTreeText('/RULES') // '';
    @shared = grep { $_->{rules} } @shared;
    my ($known) = grep { $_->{stated} eq $stated } @shared;
    return $known->{rules} if $known;
    my $rules = VEL::Rules->new(VEL::Rules::Source::read_tree($database));
    push @shared, { stated => $stated, rules => $rules };
    weaken($shared[-1]{rules});
    return $rules;
}

# By which it is seen that the rules have changed.
sub _text ($self) {
    my @lines;
    $self->{database}->getObjectVEL('/RULES', \@lines, 1) if $self->{database}->havePath('/RULES');
    return join "\n", @lines;
}

=item C<full_path($path)>

The path from the root, in normal form.

=cut

sub full_path ($self, $path) {
    my $clean = VEL::Parser::Lite::cleanPath($path);
    return $clean if $clean =~ m{^/} && index($clean, '..') < 0;
    my $database = $self->{database};
    if (!$database->pushPath($path)) {
        my $full = $database->getCurrentPath;
        $database->popPath;
        return $full;
    }
    return $clean if $clean =~ m{^/};
    return VEL::Parser::Lite::cleanPath($database->getCurrentPath . "/$clean");
}

=item C<split_path($path)>

The path of the parent (C</> for the top level) and the last component.

=cut

sub split_path ($path) {
    my $slash = rindex $path, '/';
    return (substr($path, 0, $slash) || '/', substr $path, $slash + 1);
}

=item C<type_of($path)>

The L<VEL::Rules::Type> of the object at a full path, or C<undef>. The path
alone tells: nothing need stand there.

=cut

sub type_of ($self, $path) {
    my $types     = ($self->{rules} // $self->_compile)->{types};
    my $component = substr $path, rindex($path, '/') + 1;
    my $colon     = index $component, ':';
    return $colon < 0 ? $types->{SINGLETON}{$component} : $types->{OBJECT}{ substr $component, 0, $colon };
}

=item C<variant_at($path, $type)>

The variant of that type (see L<VEL::Rules::Type>) that holds for the object at
a full path now.

=cut

sub variant_at ($self, $path, $type) {
    return $type->plain_variant if !@{ $type->{switches} };
    my $database = $self->{database};
    return $type->variant(sub ($name) {
        my $value;
        $database->getStringValue("$path/$name", \$value);
        return $value;
    });
}

=item C<parameter_at($path)>

The L<VEL::Rules::Parameter> for the parameter at a full path, there or not.

=cut

sub parameter_at ($self, $path) {
    my $slash = rindex $path, '/';
    my $owner = substr $path, 0, $slash;
    my $name  = substr $path, $slash + 1;
    my $type  = $self->type_of($owner) // return $self->{rules}->general($name);
    my $variant = $type->{cased}{$name} ? $self->variant_at($owner, $type) : $type->plain_variant;
    return $variant->{parameters}{$name} // $type->parameter($variant, $name);
}

=item C<is_expert($path)>

1 when the rule of the object or parameter says so, else 0.

=cut

sub is_expert ($self, $path) {
    $path = $self->full_path($path);
    if (index($path, ':', rindex($path, '/')) >= 0 || $self->{database}->isObject($path)) {
        my $type = $self->type_of($path);
        return $type && $type->{expert} ? 1 : 0;
    }
    return $self->parameter_at($path)->{expert} ? 1 : 0;
}

=item C<is_editable($path)>

1 when the parameter may be changed now: by its rule, and at validation level 2
(the solver is running) only when the rule says that it may be changed then. An
object is not editable.

=cut

sub is_editable ($self, $path) {
    $path = $self->full_path($path);
    return 0 if $self->{database}->isObject($path);
    my $parameter = $self->parameter_at($path);
    return 0 if !$parameter->{editable};
    return 1 if $self->{database}->getValidationLevel != 2;
    return $parameter->{running} ? 1 : 0;
}

=item C<allowed_parameters($path, $missing_only)>

The names of the parameters that the object may have, in rule order. With a
true second argument only those that it does not have, and of these the required
ones first. The single entry C<-1> where any name may be used.

=cut

sub allowed_parameters ($self, $path, $missing_only) {
    $path = $self->full_path($path);
    my $type = $self->type_of($path) // return;
    return -1 if $type->{free};
    my $variant = $self->variant_at($path, $type);
    return @{ $variant->{order} } if !$missing_only;
    my $database = $self->{database};
    my @missing  = grep { !$database->havePath("$path/$_") } @{ $variant->{order} };
    my %required = map { $_ => 1 } @{ $variant->{required} };
    return ((grep { $required{$_} } @missing), grep { !$required{$_} } @missing);
}

=item C<allowed_values($path)>

The values that the parameter may have; none where its rule lists none.

=cut

sub allowed_values ($self, $path) {
    my $parameter = $self->parameter_at($self->full_path($path));
    my @values = @{ $parameter->{values} // [] };
    push @values, @{ $self->object_names($parameter->{objects})->{list} } if $parameter->{objects};
    return @values if @values || $parameter->{type} ne 'Logical';
    return qw(Yes No);
}

=item C<explanation($path)>

What the rules say of the object or parameter at a path, there or not: a list of
C<[field, text, tip]>, see L<VEL::Explanation>. Empty where there is no rule.

=cut

sub explanation ($self, $path) { return VEL::Explanation::explain($self, $self->full_path($path)) }

=item C<object_names($types)>

The names of all objects of these types, library objects included: a hash, not to
be changed, with a C<list> in the order of the data and a C<set>.

=cut

sub object_names ($self, $types) {
    return $self->_names_of($types->[0]) if @$types == 1;
    return $self->{names}{ join ',', @$types } //= do {
        my %seen;
        my @names = grep { !$seen{$_}++ } map { @{ $self->_names_of($_)->{list} } } @$types;
        +{ list => \@names, set => \%seen, hints => VEL::Suggest->new(\@names) };
    };
}

=item C<object_path($types, $name)>

The path of the first object of these types that has the name; an empty list where
there is none.

=cut

sub object_path ($self, $types, $name) {
    my $known = $self->object_names($types);
    my $paths = $known->{paths} //= do {
        my %path;
        for my $type (@$types) {
            $self->{database}->getObjectsByType($type, \my @paths);
            $path{ _name_of($_) } //= $_ for grep { !m{^/RULES/} } @paths;
        }
        \%path;
    };
    return $paths->{$name} // ();
}

=item C<is_beyond_count($path, $type)>

Whether as many objects of that type as its rule allows stand before the one at
a full path.

=item C<first_of_type($path, $type)>

The path of the first of these objects; an empty list where the rule allows none.

=cut

sub is_beyond_count ($self, $path, $type) {
    my ($parent, $own) = split_path($path);
    return !$self->_first_of($parent, $type)->{names}{$own};
}

sub first_of_type ($self, $path, $type) {
    my ($parent) = split_path($path);
    my $first = $self->_first_of($parent, $type)->{first} // return;
    return $parent eq '/' ? "/$first" : "$parent/$first";
}

# Kept where there are many, so that all of them together are counted once.
sub _first_of ($self, $parent, $type) {
    my $kept = $self->{first}{$type}{$parent};
    return $kept if $kept;
    my $left = $type->{maximum};
    $self->{database}->getChildObjectList($parent, \my @objects);
    my %found = (names => {}, first => undef);
    for my $object (@objects) {
        last if $left <= 0;
        next if $object !~ /^\Q$type->{type}\E(?::|\z)/;
        $found{first} //= $object;
        $found{names}{$object} = 1;
        $left--;
    }
    $self->{first}{$type}{$parent} = \%found if @objects > 100;
    return \%found;
}

=item C<expression_names>

A hash, not to be changed, of the names that expressions may use.

=cut

sub expression_names ($self) {
    return $self->{expressions} //= do {
        my @names;
        my $path = '/LIBRARY/EXPRESSIONS';
        $self->{database}->getChildParamList($path, \@names) if $self->{database}->havePath($path);
        +{ map { $_ => 1 } @names };
    };
}

sub _name_of ($path) { return substr($path, 1 + rindex $path, '/') =~ s/^[^:]*://r }

sub _names_of ($self, $type) {
    return $self->{names}{$type} //= do {
        my @paths;
        $self->{database}->getObjectsByType($type, \@paths);
        my %seen;
        my @names = grep { !$seen{$_}++ } map { _name_of($_) } grep { !m{^/RULES/} } @paths;
        +{ list => \@names, set => \%seen, hints => VEL::Suggest->new(\@names) };
    };
}

=back

=cut

# Runs its code when it goes, unless it was cancelled or the program ends.
package VEL::Model::Again;

sub DESTROY ($self) {
    $self->{code}->() if $self->{code} && ${^GLOBAL_PHASE} ne 'DESTRUCT';
    return;
}

1;
