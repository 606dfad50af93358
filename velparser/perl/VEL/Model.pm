package VEL::Model;

use strict;
use warnings;
use feature 'signatures';

use Scalar::Util qw(weaken);

use VEL::Explanation;
use VEL::Parser::Lite;
use VEL::Path qw(split_path last_component split_component name_at);
use VEL::Rules;
use VEL::Rules::Library;
use VEL::Rules::Source;
use VEL::Suggest;

=head1 NAME

VEL::Model - answers questions about the data of one command database, using its rules

=head1 SYNOPSIS

    my $model = VEL::Model->of($database);
    print "read-only\n" if !$model->is_editable('/FLOW/DOMAIN:Duct/Kind');

=head1 DESCRIPTION

There is one model for each database, shared by all callers. It listens to the changes of
the database. So it compiles the rules again only if a library has changed something below
F</RULES>, and lists the objects of a type again only if objects were added or removed. It
keeps listening after C<clearChangeHandlers>. It cannot listen to a database that the
program owns; for such a database every C<refresh> reads the rules again.

Only library data can state rules (see L<VEL::Rules::Library>): command data below
F</RULES> changes no rule.

All paths may be relative to the current path.

=cut

# All existing models, not owned.
my @models;

# A new thread begins with none: databases stay in the thread that made them.
sub CLONE { @models = (); return }

=head1 METHODS

=over

=item C<< VEL::Model->of($database) >>

The model of a database, even if another C<VEL::Parser::Lite> object wraps it.

=cut

sub of ($class, $database) {
    @models = grep { defined } @models;
    weaken($_) for @models;
    for my $model (@models) {
        return $model if $database->isSameDatabase($model->{database});
    }
    my $self = bless {
        database  => $database,
        library   => undef,    # the rules without those of the data; undef while data states none
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

# The handler is called for every parameter of a file that is loaded, so the common case
# returns at once. It is destroyed when the handlers of the database are cleared; the object
# that it owns then makes the model listen again.
sub _listen ($self) {
    my $model = $self;
    weaken($model);
    my $again = bless { code => sub { $model->_listen if $model } }, 'VEL::Model::Again';
    my $database = $self->{database};
    weaken($database);
    my $handler = sub {
        return if !$_[1] && defined $_[2] && $_[0] !~ m{^/(?:RULES|LIBRARY/EXPRESSIONS)/};
        # A library that is read before the rules are compiled.
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

# Whether a change below /RULES belongs to the data. Before the first such change the tree
# contains what the libraries state; after it, a copy of that is kept.
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

# Whether command data has stated rules, or parts of rules.
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

# Whether only libraries have stated the parents of a node that was removed. /RULES itself
# does not count: everything in it was removed before.
sub _is_inside_library ($self, $path) {
    return 0 if $path eq '/RULES';
    for (my ($at) = split_path($path); $at ne '/'; ($at) = split_path($at)) {
        return 0 if $self->{database}->isLibrary($at) != 1;
    }
    return 1;
}

# A mark is valid only with the rules under which it was set.
sub _drop_rules ($self) {
    return if !$self->{rules};
    $self->{rules} = undef;
    $self->clear_marks;
    return;
}

=item C<clear_marks>

Removes the mark of every object.

=cut

# Without recursion, because blocks may nest thousands of levels deep.
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

Calls C<$listener> with path, code, new and old value for every object that is added or
removed, every parameter that is removed (code 0, no new value), and every change of
command data below F</RULES>. The caller keeps the listener; the model does not own it.

=cut

sub on_change ($self, $listener) {
    push @{ $self->{listeners} }, $listener;
    weaken($self->{listeners}[-1]);
    return;
}

=item C<refresh>

Call this before a series of questions. It finds changes that the model could not listen
to.

=item C<forget>

Call this after the libraries have been read. It forgets everything that it knows about the
database, and removes all marks.

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

The database; the current rules; how often the rules have been compiled.

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

# Databases whose libraries have the same contents share the rules: { stated, rules }, not owned.
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

# The text that shows whether the rules have changed.
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

=item C<type_of($path)>

The L<VEL::Rules::Type> of the object at a full path, or C<undef>. It depends only on the
path: the object need not exist.

=cut

sub type_of ($self, $path) {
    my $types = ($self->{rules} // $self->_compile)->{types};
    my ($type, $name) = split_component(last_component($path));
    return $types->{ defined $name ? 'OBJECT' : 'SINGLETON' }{$type};
}

=item C<variant_at($path, $type)>

The variant of that type (see L<VEL::Rules::Type>) that applies now to the object at a
full path.

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

The L<VEL::Rules::Parameter> for the parameter at a full path, whether it exists or
not.

=cut

sub parameter_at ($self, $path) {
    my ($owner, $name) = split_path($path);
    my $type = $self->type_of($owner) // return $self->{rules}->general($name);
    my $variant = $type->{cased}{$name} ? $self->variant_at($owner, $type) : $type->plain_variant;
    return $variant->{parameters}{$name} // $type->parameter($variant, $name);
}

=item C<is_expert($path)>

1 if the rule of the object or parameter says so, otherwise 0.

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

1 if the rule allows a change of the parameter now. At validation level 2 the solver is
running, and the rule must allow changes during the run. An object is not editable.

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

The names of the parameters that the object may have, in rule order. If the second
argument is true, only those that it does not have yet, the required ones first. The single
entry C<-1> if any name is allowed.

=cut

sub allowed_parameters ($self, $path, $missing_only) {
    $path = $self->full_path($path);
    my $type = $self->type_of($path) // return;
    return -1 if $type->{free};
    my $variant = $self->variant_at($path, $type);
    return @{ $variant->{order} } if !$missing_only;
    my @missing  = $self->_missing($path, @{ $variant->{order} });
    my %required = map { $_ => 1 } @{ $variant->{required} };
    return ((grep { $required{$_} } @missing), grep { !$required{$_} } @missing);
}

=item C<missing_parameters($path)>

The names of the required parameters that the object does not have, in rule order.

=cut

sub missing_parameters ($self, $path) {
    $path = $self->full_path($path);
    my $type = $self->type_of($path) // return;
    return $self->_missing($path, @{ $self->variant_at($path, $type)->{required} });
}

sub _missing ($self, $path, @names) { return grep { !$self->{database}->havePath("$path/$_") } @names }

=item C<allowed_values($path)>

The values that the parameter may have; none if its rule lists none.

=cut

sub allowed_values ($self, $path) {
    my $parameter = $self->parameter_at($self->full_path($path));
    my @values = @{ $parameter->{values} // [] };
    push @values, @{ $self->object_names($parameter->{objects})->{list} } if $parameter->{objects};
    return @values if @values || $parameter->{type} ne 'Logical';
    return qw(Yes No);
}

=item C<explanation($path)>

What the rules say about the object or parameter at a path, whether it exists or
not: a list of C<[field, text, tip]>, see L<VEL::Explanation>. Empty if there is no rule.

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

The path of the first object of these types that has the name; an empty list if there is
none.

=cut

sub object_path ($self, $types, $name) {
    my $known = $self->object_names($types);
    my $paths = $known->{paths} //= do {
        my %path;
        for my $type (@$types) {
            $self->{database}->getObjectsByType($type, \my @paths);
            $path{ name_at($_) } //= $_ for grep { !m{^/RULES/} } @paths;
        }
        \%path;
    };
    return $paths->{$name} // ();
}

=item C<is_beyond_count($path, $type)>

Whether the object at a full path is beyond the maximum count of its type: enough objects
of the type come before it in its parent.

=item C<first_of_type($path, $type)>

The path of the first of these objects; an empty list if the rule allows none.

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

# The count is kept if the parent has many objects, so that they are counted only once.
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

sub _names_of ($self, $type) {
    return $self->{names}{$type} //= do {
        my @paths;
        $self->{database}->getObjectsByType($type, \@paths);
        my %seen;
        my @names = grep { !$seen{$_}++ } map { name_at($_) } grep { !m{^/RULES/} } @paths;
        +{ list => \@names, set => \%seen, hints => VEL::Suggest->new(\@names) };
    };
}

=back

=cut

# Runs its code when it is destroyed, unless it was cancelled or the program ends.
package VEL::Model::Again;

sub DESTROY ($self) {
    $self->{code}->() if $self->{code} && ${^GLOBAL_PHASE} ne 'DESTRUCT';
    return;
}

1;
